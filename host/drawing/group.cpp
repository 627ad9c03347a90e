#include "host/drawing/group.h"

#include "host/handles.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <cmath>
#include <utility>

namespace mor::host {

std::string_view Group::bare() const { return trimmed(text()); }

std::string Group::shown() const {
    switch (m_form) {
        case Form::Integer:
            return codeKind(m_code) == CodeKind::Handle
                       ? handleText(static_cast<std::uint64_t>(m_integer))
                       : std::to_string(m_integer);
        case Form::Real:
            return realText(m_real);
        case Form::Text:
            break;
    }
    return std::string(m_text);
}

std::optional<std::int64_t> Group::integer() const {
    switch (m_form) {
        case Form::Integer:
            return m_integer;
        case Form::Real:
            return std::nullopt;
        case Form::Text:
            break;
    }
    return parseInteger(m_text);
}

std::optional<double> Group::real() const {
    switch (m_form) {
        case Form::Integer:
            return static_cast<double>(m_integer);
        case Form::Real:
            return std::isfinite(m_real) ? std::optional(m_real) : std::nullopt;
        case Form::Text:
            break;
    }
    return parseReal(m_text);
}

std::uint64_t Group::handle() const {
    if (m_form == Form::Integer) return static_cast<std::uint64_t>(m_integer);
    return isText() ? parseHandle(bare()) : 0;
}

bool Group::equals(const GroupValue& value) const {
    if (const auto* wanted = std::get_if<std::int64_t>(&value)) return integer() == *wanted;
    if (const auto* wanted = std::get_if<double>(&value)) return real() == *wanted;
    return text() == std::get<std::string>(value);
}

std::string_view GroupList::keep(std::string text) {
    m_texts.push_front(std::move(text));
    return m_texts.front();
}

std::string& GroupList::restart() {
    m_groups.clear();
    m_extended.reset();
    if (m_texts.empty()) m_texts.emplace_front();
    m_texts.erase_after(m_texts.begin(), m_texts.end());
    return m_texts.front();
}

Group GroupList::keep(const NewGroup& group) {
    if (const auto* integer = std::get_if<std::int64_t>(&group.value))
        return {group.code, *integer};
    if (const auto* real = std::get_if<double>(&group.value)) return {group.code, *real};
    return {group.code, keep(std::get<std::string>(group.value))};
}

void GroupList::assign(std::vector<Group> groups) {
    m_groups = std::move(groups);
    m_extended.reset();
    for (std::size_t i = 0; i < m_groups.size() && !m_extended; ++i)
        if (m_groups[i].code() == kApplicationCode) m_extended = i;
}

GroupList GroupList::borrowed() const {
    GroupList list;
    list.m_groups = m_groups;
    list.m_extended = m_extended;
    return list;
}

std::optional<std::size_t> GroupList::indexOf(int code) const {
    bool inBrackets = false;
    for (std::size_t i = 0; i < extendedBegin(); ++i) {
        const Group& group = m_groups[i];
        if (group.code() == kBracketCode)
            inBrackets = group.text().starts_with("{");
        else if (group.code() == code && !inBrackets)
            return i;
    }
    return std::nullopt;
}

const Group* GroupList::find(int code) const {
    const auto index = indexOf(code);
    return index ? &m_groups[*index] : nullptr;
}

double GroupList::realOf(int code, double missing) const {
    const Group* group = find(code);
    return group == nullptr ? missing : group->real().value_or(missing);
}

std::int64_t GroupList::integerOf(int code, std::int64_t missing) const {
    const Group* group = find(code);
    return group == nullptr ? missing : group->integer().value_or(missing);
}

std::array<double, 3> GroupList::pointOf(int code, std::array<double, 3> missing) const {
    return {realOf(code, missing[0]), realOf(code + 10, missing[1]), realOf(code + 20, missing[2])};
}

std::vector<ExtendedRange> extendedRanges(const GroupList& record, std::string_view application) {
    std::vector<ExtendedRange> ranges;
    for (std::size_t i = record.extendedBegin(); i < record.size(); ++i) {
        if (record[i].code() != kApplicationCode ||
            !equalsNoCaseAscii(record[i].bare(), application))
            continue;
        ExtendedRange range{i, i + 1};
        for (std::size_t k = i + 1; k < record.size() && record[k].code() != kApplicationCode; ++k)
            if (record[k].code() != kCommentCode) range.end = k + 1;
        ranges.push_back(range);
    }
    return ranges;
}

}  // namespace mor::host
