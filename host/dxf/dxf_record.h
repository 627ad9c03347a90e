#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// One group of a record: where its code line, its value and its end lie in the record's bytes.
struct Tag {
    int code = 0;
    std::uint32_t begin = 0;
    std::uint32_t valueBegin = 0;
    std::uint32_t valueEnd = 0;  ///< without the line end
    std::uint32_t end = 0;       ///< behind the line end
};

/// The bytes of one record, cut into groups.
class TagList {
public:
    TagList() = default;
    explicit TagList(std::string bytes);

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] const std::vector<Tag>& tags() const { return m_tags; }
    [[nodiscard]] std::string_view value(const Tag& tag) const {
        return std::string_view(m_bytes).substr(tag.valueBegin, tag.valueEnd - tag.valueBegin);
    }
    /// The same without blanks around it, as numbers, handles and types are read.
    [[nodiscard]] std::string_view bare(const Tag& tag) const;
    /// Index of the first 1001; the number of tags when there is none. XRECORDs and the like use
    /// the codes of extended data before it as plain data.
    [[nodiscard]] std::size_t extendedBegin() const { return m_extended; }
    /// The first group with that code before the extended data and outside `102 {` ... `102 }`.
    [[nodiscard]] const Tag* find(int code) const;
    /// The first group with that code at or behind `from` among all groups, null when there is
    /// none.
    [[nodiscard]] const Tag* findFrom(std::size_t from, int code) const;

private:
    std::string m_bytes;
    std::vector<Tag> m_tags;
    std::size_t m_extended = 0;
};

/// The value that `TagList::find` gives for a record's bytes, without cutting what stands behind
/// it.
[[nodiscard]] std::optional<std::string_view> findValue(std::string_view bytes, int code);

/// How a file writes its lines.
struct LineStyle {
    bool crlf = false;
    bool padded = true;  ///< codes right-aligned to three columns, integers to six or nine

    [[nodiscard]] std::string_view end() const { return crlf ? "\r\n" : "\n"; }
};

/// What closes a last line that has no line end; empty when it has one.
[[nodiscard]] std::string_view lineEndFor(std::string_view bytes, const LineStyle& style);
/// One group as a line pair.
[[nodiscard]] std::string line(const LineStyle& style, int code, std::string_view value);
[[nodiscard]] std::string integerLine(const LineStyle& style, int code, std::int64_t value);
/// Shortest digits that read back to the same bits, with a point or an exponent.
[[nodiscard]] std::string realText(double value);
[[nodiscard]] std::string realLine(const LineStyle& style, int code, double value);
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text);
[[nodiscard]] std::optional<double> parseReal(std::string_view text);

/// Hexadecimal text as a handle; 0 when it is none.
[[nodiscard]] std::uint64_t parseHandle(std::string_view text) noexcept;
[[nodiscard]] std::string handleToText(std::uint64_t handle);  ///< upper case; empty for 0

/// The groups of one application's extended data.
struct ExtendedRange {
    std::size_t begin = 0;  ///< index of its 1001
    std::size_t end = 0;    ///< index behind its last group; trailing comments are not part of it
};
/// All lists of the application, in order (the name is compared without regard to case).
[[nodiscard]] std::vector<ExtendedRange> extendedRanges(const TagList& record,
                                                        std::string_view application);

/// Bytes that the platform counts for one group of extended data.
[[nodiscard]] long extendedCost(int code, std::size_t valueBytes);

}  // namespace mor::host
