#pragma once

#include "host/drawing/group.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// One group of a record: where its code, its value and its end lie in the record's bytes.
struct Tag {
    int code = 0;
    std::uint32_t begin = 0;
    std::uint32_t valueBegin = 0;
    std::uint32_t valueEnd = 0;  ///< without the line end, or the NUL of the binary form
    std::uint32_t end = 0;
};

/// What a binary file begins with.
inline constexpr std::string_view kBinaryMark("AutoCAD Binary DXF\r\n\x1A\0", 22);

/// How a DXF file writes its groups.
struct DxfForm {
    enum class Kind : std::uint8_t {
        Text,     ///< a line with the code, a line with the value
        OneByte,  ///< binary, codes of one byte; 255 and two bytes for codes above
        TwoBytes  ///< binary, codes of two bytes
    };
    Kind kind = Kind::Text;
    std::string_view lineEnd = "\n";  ///< of new lines: LF, CR LF or CR
    bool anyLineEnd = false;          ///< lines end with CR too, not only with LF or CR LF
    bool padded = true;  ///< codes right-aligned to three columns, integers to six or nine

    [[nodiscard]] bool isText() const { return kind == Kind::Text; }

    /// Cuts the group that begins at `at` and goes on behind it; false at the end of the bytes and
    /// where they are no group.
    bool next(std::string_view bytes, std::size_t& at, Tag& tag) const;
    /// The group of a tag. Its text is that of `bytes`, or kept in `list`.
    [[nodiscard]] Group group(std::string_view bytes, const Tag& tag, GroupList& list) const;
    /// The bytes of a group.
    [[nodiscard]] std::string bytes(const Group& group) const;
    [[nodiscard]] std::string bytes(int code, std::string_view text) const {
        return bytes(Group(code, text));
    }
    /// A whole record.
    [[nodiscard]] std::string bytes(const GroupList& record) const;
    /// The bytes of a group of the record `old` that gets another value; an integer keeps its
    /// width.
    [[nodiscard]] std::string exchanged(std::string_view old, const Tag& tag,
                                        const Group& group) const;
    /// What closes a last line that has no line end; empty when it has one.
    [[nodiscard]] std::string_view missingLineEnd(std::string_view bytes) const;

private:
    bool nextLines(std::string_view bytes, std::size_t& at, Tag& tag) const;
    bool nextBinary(std::string_view bytes, std::size_t& at, Tag& tag) const;
    [[nodiscard]] std::string lines(const Group& group) const;
    [[nodiscard]] std::string binary(const Group& group) const;
};

/// The bytes of one record, cut into groups.
class TagList {
public:
    TagList(std::string bytes, const DxfForm& form);
    TagList(const TagList&) = delete;
    TagList& operator=(const TagList&) = delete;
    ~TagList() = default;

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] const std::vector<Tag>& tags() const { return m_tags; }
    /// The same groups, one for each tag; their texts are those of this list.
    [[nodiscard]] const GroupList& groups() const { return m_groups; }
    [[nodiscard]] std::size_t beginOf(std::size_t tag) const {
        return tag < m_tags.size() ? m_tags[tag].begin : m_bytes.size();
    }

private:
    std::string m_bytes;
    std::vector<Tag> m_tags;
    GroupList m_groups;
};

/// The groups of a record's bytes.
[[nodiscard]] GroupList groupsFrom(std::string bytes, const DxfForm& form);
/// Adds them to a list; their texts are those of `bytes`.
void addGroups(std::string_view bytes, const DxfForm& form, GroupList& list);

/// The group that `GroupList::find` gives for a record's bytes, without cutting what stands behind
/// it. Its text is that of `bytes`, or kept in `list`.
[[nodiscard]] std::optional<Group> findGroup(std::string_view bytes, const DxfForm& form, int code,
                                             GroupList& list);

/// A code line: digits, blanks around them, a sign perhaps.
[[nodiscard]] std::optional<int> parseCode(std::string_view line);

}  // namespace mor::host
