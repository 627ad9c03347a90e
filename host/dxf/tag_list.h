#pragma once

#include "host/drawing/group.h"

#include <cstdint>
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
    [[nodiscard]] std::string_view bare(const Tag& tag) const;  ///< without blanks around it
    /// The same groups, one for each tag; their texts are those of this list.
    [[nodiscard]] GroupList groups() const;

private:
    std::string m_bytes;
    std::vector<Tag> m_tags;
};

/// The groups of a record's bytes.
[[nodiscard]] GroupList groupsFrom(std::string bytes);

/// The value that `GroupList::find` gives for a record's bytes, without cutting what stands behind
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
[[nodiscard]] std::string realLine(const LineStyle& style, int code, double value);
/// A group in the style of the file.
[[nodiscard]] std::string groupLine(const LineStyle& style, const Group& group);
/// A whole record.
[[nodiscard]] std::string recordLines(const LineStyle& style, const GroupList& record);

}  // namespace mor::host
