#include "host/dxf/tag_list.h"

#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

/// A code line; most are blanks and digits only.
std::optional<std::int64_t> parseCode(std::string_view text) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    if (text.empty() || text.size() > 4) return parseInteger(text);
    std::int64_t code = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return parseInteger(text);
        code = code * 10 + (c - '0');
    }
    return code;
}

/// Cuts the group that begins at `at` and goes on behind it; false at the end and at bytes behind
/// EOF.
bool nextTag(std::string_view bytes, std::size_t& at, Tag& tag) {
    if (at >= bytes.size()) return false;
    const std::size_t codeEnd = bytes.find('\n', at);
    if (codeEnd == std::string_view::npos) return false;
    std::size_t codeStop = codeEnd;
    if (codeStop > at && bytes[codeStop - 1] == '\r') --codeStop;
    const auto code = parseCode(bytes.substr(at, codeStop - at));
    if (!code) return false;
    const std::size_t valueEnd = std::min(bytes.find('\n', codeEnd + 1), bytes.size());
    tag.begin = static_cast<std::uint32_t>(at);
    tag.code = static_cast<int>(*code);
    tag.valueBegin = static_cast<std::uint32_t>(codeEnd + 1);
    tag.valueEnd = static_cast<std::uint32_t>(valueEnd);
    tag.end = static_cast<std::uint32_t>(std::min(valueEnd + 1, bytes.size()));
    if (tag.valueEnd > tag.valueBegin && bytes[valueEnd - 1] == '\r') --tag.valueEnd;
    at = tag.end;
    return true;
}

}  // namespace

TagList::TagList(std::string bytes) : m_bytes(std::move(bytes)) {
    Tag tag;
    for (std::size_t at = 0; nextTag(m_bytes, at, tag);) m_tags.push_back(tag);
}

std::string_view TagList::bare(const Tag& tag) const { return trimmed(value(tag)); }

GroupList TagList::groups() const {
    GroupList list;
    list.reserve(m_tags.size());
    for (const Tag& tag : m_tags) list.add(Group(tag.code, value(tag)));
    return list;
}

GroupList groupsFrom(std::string bytes) {
    GroupList list;
    const std::string_view text = list.keep(std::move(bytes));
    Tag tag;
    for (std::size_t at = 0; nextTag(text, at, tag);)
        list.add(Group(tag.code, text.substr(tag.valueBegin, tag.valueEnd - tag.valueBegin)));
    return list;
}

std::optional<std::string_view> findValue(std::string_view bytes, int code) {
    bool inGroup = false;
    Tag tag;
    for (std::size_t at = 0; nextTag(bytes, at, tag) && tag.code != kApplicationCode;) {
        const std::string_view value = bytes.substr(tag.valueBegin, tag.valueEnd - tag.valueBegin);
        if (tag.code == kBracketCode)
            inGroup = value.starts_with("{");
        else if (tag.code == code && !inGroup)
            return value;
    }
    return std::nullopt;
}

std::string_view lineEndFor(std::string_view bytes, const LineStyle& style) {
    if (bytes.empty() || bytes.ends_with('\n')) return {};
    return bytes.ends_with('\r') ? "\n" : style.end();
}

std::string line(const LineStyle& style, int code, std::string_view value) {
    std::string text = std::to_string(code);
    if (style.padded) text = padLeft(std::move(text), 3);
    text += style.end();
    text += value;
    text += style.end();
    return text;
}

std::string integerLine(const LineStyle& style, int code, std::int64_t value) {
    std::string digits = std::to_string(value);
    const bool wide = codeKind(code) == CodeKind::Integer32;
    if (style.padded) digits = padLeft(std::move(digits), wide ? 9 : 6);
    return line(style, code, digits);
}

std::string realLine(const LineStyle& style, int code, double value) {
    return line(style, code, realText(value));
}

std::string groupLine(const LineStyle& style, const Group& group) {
    if (group.isText()) return line(style, group.code(), group.text());
    if (const auto integer = group.integer()) return integerLine(style, group.code(), *integer);
    return line(style, group.code(), group.shown());
}

std::string recordLines(const LineStyle& style, const GroupList& record) {
    std::string bytes;
    for (const Group& group : record) bytes += groupLine(style, group);
    return bytes;
}

}  // namespace mor::host
