#pragma once

#include "host/text/group_codes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace mor::host {

/// Stands in no value. With it a copy that fails for want of memory leaves its variant as one
/// without a value; of numbers and text alone the library takes that to be impossible.
struct NoValue {
    NoValue() = default;
    // NOLINTBEGIN(modernize-use-equals-default): trivial ones would count as never failing
    NoValue(const NoValue& /*other*/) {}
    NoValue& operator=(const NoValue& /*other*/) { return *this; }
    // NOLINTEND(modernize-use-equals-default)
    ~NoValue() = default;
};

/// A value that a group gets: an integer, a real, or text in the drawing's encoding.
using GroupValue = std::variant<std::int64_t, double, std::string, NoValue>;

/// A group to be written; text of handles and applications included.
struct NewGroup {
    int code = 0;
    GroupValue value;
};

/// One group of a record, its value as the file has it: text, or a number where the form of the
/// file keeps numbers as such. A view: the text is that of the list or the record it came from.
class Group {
public:
    Group() = default;
    Group(int code, std::string_view text) : m_text(text), m_code(code) {}
    Group(int code, std::int64_t integer)
        : m_integer(integer), m_code(code), m_form(Form::Integer) {}
    Group(int code, double real) : m_real(real), m_code(code), m_form(Form::Real) {}

    [[nodiscard]] int code() const noexcept { return m_code; }
    /// Whether the file has it as text; numbers of a text form are text.
    [[nodiscard]] bool isText() const noexcept { return m_form == Form::Text; }
    /// The undecoded text; empty for a number that is none.
    [[nodiscard]] std::string_view text() const noexcept {
        return isText() ? m_text : std::string_view();
    }
    /// The same without blanks around it, as numbers, handles and types are read.
    [[nodiscard]] std::string_view bare() const;
    /// The value as text, whatever it is.
    [[nodiscard]] std::string shown() const;
    /// Nothing when the value is no such number.
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] std::optional<double> real() const;
    [[nodiscard]] std::uint64_t handle() const;  ///< 0 when it is none
    /// Whether the value says the same; texts are compared as the file has them.
    [[nodiscard]] bool equals(const GroupValue& value) const;

private:
    enum class Form : std::uint8_t { Text, Integer, Real };
    union {
        std::string_view m_text{};
        std::int64_t m_integer;
        double m_real;
    };
    int m_code = 0;
    Form m_form = Form::Text;
};

/// The groups of one record in their order, group 0 first, with the texts they show.
class GroupList {
public:
    GroupList() = default;
    GroupList(GroupList&&) noexcept = default;
    GroupList& operator=(GroupList&&) noexcept = default;
    GroupList(const GroupList&) = delete;
    GroupList& operator=(const GroupList&) = delete;
    ~GroupList() = default;

    /// Keeps text for groups of this list; it stays where it is as long as the list lives.
    std::string_view keep(std::string text);
    Group keep(const NewGroup& group);
    /// Takes all groups and texts out but one text, empty or not, which is kept to be filled anew:
    /// its room and the list's are used again.
    [[nodiscard]] std::string& restart();
    void add(Group group) {
        if (group.code() == kApplicationCode && !m_extended) m_extended = m_groups.size();
        m_groups.push_back(group);
    }
    void add(const NewGroup& group) { add(keep(group)); }
    /// Other groups, whose texts are kept here or outlive the list.
    void assign(std::vector<Group> groups);
    /// The same groups; their texts stay here.
    [[nodiscard]] GroupList borrowed() const;
    void reserve(std::size_t count) { m_groups.reserve(count); }

    [[nodiscard]] std::size_t size() const noexcept { return m_groups.size(); }
    [[nodiscard]] const Group& operator[](std::size_t index) const { return m_groups[index]; }
    [[nodiscard]] auto begin() const { return m_groups.begin(); }
    [[nodiscard]] auto end() const { return m_groups.end(); }

    /// Index of the first 1001; the number of groups when there is none. XRECORDs and the like use
    /// the codes of extended data before it as plain data.
    [[nodiscard]] std::size_t extendedBegin() const noexcept {
        return m_extended ? *m_extended : m_groups.size();
    }
    /// Index of the first group with that code before the extended data and outside `102 {` ...
    /// `102 }`; nothing when there is none.
    [[nodiscard]] std::optional<std::size_t> indexOf(int code) const;
    [[nodiscard]] const Group* find(int code) const;
    /// Its number; `missing` when there is none.
    [[nodiscard]] double realOf(int code, double missing) const;
    [[nodiscard]] std::int64_t integerOf(int code, std::int64_t missing) const;
    /// The point whose coordinates have the codes `code`, 10 and 20 higher.
    [[nodiscard]] std::array<double, 3> pointOf(int code, std::array<double, 3> missing) const;

private:
    std::forward_list<std::string> m_texts;
    std::vector<Group> m_groups;
    std::optional<std::size_t> m_extended;
};

/// The groups of one application's extended data.
struct ExtendedRange {
    std::size_t begin = 0;  ///< index of its 1001
    std::size_t end = 0;    ///< index behind its last group; trailing comments are not part of it
};
/// All lists of the application, in order (the name is compared without regard to case).
[[nodiscard]] std::vector<ExtendedRange> extendedRanges(const GroupList& record,
                                                        std::string_view application);

}  // namespace mor::host
