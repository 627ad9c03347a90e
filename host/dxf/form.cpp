#include "host/dxf/form.h"

#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace mor::host {

namespace {

constexpr unsigned kLongCode = 255;  // of the one-byte form: the code follows in two bytes

static_assert(std::endian::native == std::endian::little, "binary drawings are read as they lie");

template <typename Number>
Number load(std::string_view bytes, std::size_t at) {
    Number number{};
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

template <typename Number>
void store(std::string& bytes, Number number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

/// Bytes of a value of the binary form; 0 for texts and chunks.
std::size_t sizeOf(CodeKind kind) {
    switch (kind) {
        case CodeKind::Real:
        case CodeKind::Point:
        case CodeKind::Integer64:
            return 8;
        case CodeKind::Integer32:
            return 4;
        case CodeKind::Integer16:
            return 2;
        case CodeKind::Flag:
            return 1;
        default:
            return 0;
    }
}

std::int64_t loadInteger(std::string_view bytes, const Tag& tag) {
    switch (tag.valueEnd - tag.valueBegin) {
        case 8:
            return load<std::int64_t>(bytes, tag.valueBegin);
        case 4:
            return load<std::int32_t>(bytes, tag.valueBegin);
        case 2:
            return load<std::int16_t>(bytes, tag.valueBegin);
        default:
            return static_cast<unsigned char>(bytes[tag.valueBegin]);
    }
}

std::string toHex(std::string_view bytes) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        text += kDigits[static_cast<unsigned char>(c) >> 4U];
        text += kDigits[static_cast<unsigned char>(c) & 15U];
    }
    return text;
}

std::string fromHex(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2)
        bytes += static_cast<char>(parseHandle(text.substr(at, 2)));
    return bytes;
}

struct LineEnd {
    std::size_t end = 0;   // of the line itself
    std::size_t next = 0;  // where the next line begins
};

/// Where the line that begins at `at` ends; a last line may have no line end.
LineEnd lineEndAt(std::string_view bytes, std::size_t at, bool any) {
    const std::size_t found = any ? bytes.find_first_of("\r\n", at) : bytes.find('\n', at);
    if (found == std::string_view::npos) {
        // The carriage return of a line end that was cut off.
        const bool half = !any && bytes.size() > at && bytes.back() == '\r';
        return {bytes.size() - (half ? 1 : 0), bytes.size()};
    }
    const bool both = any && bytes[found] == '\r' && bytes.substr(found + 1, 1) == "\n";
    const bool before = !any && found > at && bytes[found - 1] == '\r';
    return {before ? found - 1 : found, found + (both ? 2 : 1)};
}

}  // namespace

std::optional<int> parseCode(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.size() > 6) return std::nullopt;
    int plain = 0;
    std::size_t digits = 0;
    for (; digits < line.size() && line[digits] >= '0' && line[digits] <= '9'; ++digits)
        plain = plain * 10 + (line[digits] - '0');
    if (digits == line.size()) return plain;
    const auto code = parseInteger(line);
    if (!code || line.find_first_not_of("-0123456789") != std::string_view::npos)
        return std::nullopt;
    return static_cast<int>(*code);
}

bool DxfForm::nextLines(std::string_view bytes, std::size_t& at, Tag& tag) const {
    const LineEnd codeLine = lineEndAt(bytes, at, anyLineEnd);
    if (codeLine.next == bytes.size() && !bytes.ends_with('\n') && !bytes.ends_with('\r'))
        return false;
    const auto code = parseCode(bytes.substr(at, codeLine.end - at));
    if (!code) return false;
    const LineEnd value = lineEndAt(bytes, codeLine.next, anyLineEnd);
    tag.code = *code;
    tag.begin = static_cast<std::uint32_t>(at);
    tag.valueBegin = static_cast<std::uint32_t>(codeLine.next);
    tag.valueEnd = static_cast<std::uint32_t>(value.end);
    tag.end = static_cast<std::uint32_t>(value.next);
    at = value.next;
    return true;
}

bool DxfForm::nextBinary(std::string_view bytes, std::size_t& at, Tag& tag) const {
    std::size_t begin = at + (kind == Kind::OneByte ? 1 : 2);
    if (begin > bytes.size()) return false;
    unsigned code = kind == Kind::OneByte ? static_cast<unsigned char>(bytes[at])
                                          : load<std::uint16_t>(bytes, at);
    if (kind == Kind::OneByte && code == kLongCode) {
        begin += 2;
        if (begin > bytes.size()) return false;
        code = load<std::uint16_t>(bytes, at + 1);
    }
    const CodeKind value = codeKind(static_cast<int>(code));
    std::size_t size = sizeOf(value);
    std::size_t behind = 0;
    if (value == CodeKind::Unknown) return false;
    if (value == CodeKind::Chunk) {
        if (begin == bytes.size()) return false;
        size = static_cast<unsigned char>(bytes[begin++]);
    } else if (size == 0) {
        const std::size_t stop = bytes.find('\0', begin);
        if (stop == std::string_view::npos) return false;
        size = stop - begin;
        behind = 1;
    }
    if (size + behind > bytes.size() - begin) return false;
    tag.code = static_cast<int>(code);
    tag.begin = static_cast<std::uint32_t>(at);
    tag.valueBegin = static_cast<std::uint32_t>(begin);
    tag.valueEnd = static_cast<std::uint32_t>(begin + size);
    tag.end = static_cast<std::uint32_t>(begin + size + behind);
    at = tag.end;
    return true;
}

bool DxfForm::next(std::string_view bytes, std::size_t& at, Tag& tag) const {
    if (at >= bytes.size()) return false;
    return isText() ? nextLines(bytes, at, tag) : nextBinary(bytes, at, tag);
}

Group DxfForm::group(std::string_view bytes, const Tag& tag, GroupList& list) const {
    const std::string_view value = bytes.substr(tag.valueBegin, tag.valueEnd - tag.valueBegin);
    if (isText()) return {tag.code, value};
    const CodeKind what = codeKind(tag.code);
    if (isInteger(what)) return {tag.code, loadInteger(bytes, tag)};
    if (isReal(what)) return {tag.code, load<double>(bytes, tag.valueBegin)};
    return {tag.code, what == CodeKind::Chunk ? list.keep(toHex(value)) : value};
}

std::string DxfForm::lines(const Group& group) const {
    std::string code = std::to_string(group.code());
    if (padded) code = padLeft(std::move(code), 3);
    std::string value = group.shown();
    if (padded && !group.isText() && isInteger(codeKind(group.code())))
        value = padLeft(std::move(value), codeKind(group.code()) == CodeKind::Integer32 ? 9 : 6);
    return code.append(lineEnd).append(value).append(lineEnd);
}

std::string DxfForm::binary(const Group& group) const {
    std::string bytes;
    const auto code = static_cast<std::uint16_t>(group.code());
    if (kind == Kind::TwoBytes) {
        store(bytes, code);
    } else if (code < kLongCode) {
        store(bytes, static_cast<std::uint8_t>(code));
    } else {
        store(bytes, static_cast<std::uint8_t>(kLongCode));
        store(bytes, code);
    }
    const CodeKind value = codeKind(group.code());
    if (isReal(value)) {
        store(bytes, group.real().value_or(0.0));
    } else if (isInteger(value)) {
        std::string number;
        store(number, group.integer().value_or(0));
        bytes.append(number, 0, sizeOf(value));
    } else if (value == CodeKind::Chunk) {
        const std::string chunk = fromHex(group.text());
        store(bytes, static_cast<std::uint8_t>(chunk.size()));
        bytes += chunk;
    } else {
        bytes.append(group.shown()).append(1, '\0');
    }
    return bytes;
}

std::string DxfForm::bytes(const Group& group) const {
    return isText() ? lines(group) : binary(group);
}

std::string DxfForm::bytes(const GroupList& record) const {
    std::string result;
    for (const Group& group : record) result += bytes(group);
    return result;
}

std::string DxfForm::exchanged(std::string_view old, const Tag& tag, const Group& group) const {
    if (!isText()) return binary(group);
    std::string value = group.shown();
    if (!group.isText() && isInteger(codeKind(group.code())))
        value = padLeft(std::move(value), tag.valueEnd - tag.valueBegin);
    std::string result(old.substr(tag.begin, tag.valueBegin - tag.begin));
    return result.append(value).append(old.substr(tag.valueEnd, tag.end - tag.valueEnd));
}

std::string_view DxfForm::missingLineEnd(std::string_view bytes) const {
    if (!isText() || bytes.empty() || bytes.ends_with('\n')) return {};
    if (!bytes.ends_with('\r')) return lineEnd;
    return anyLineEnd ? std::string_view() : "\n";
}

TagList::TagList(std::string bytes, const DxfForm& form) : m_bytes(std::move(bytes)) {
    Tag tag;
    for (std::size_t at = 0; form.next(m_bytes, at, tag);) {
        m_tags.push_back(tag);
        m_groups.add(form.group(m_bytes, tag, m_groups));
    }
}

GroupList groupsFrom(std::string bytes, const DxfForm& form) {
    GroupList list;
    addGroups(list.keep(std::move(bytes)), form, list);
    return list;
}

namespace {

/// Adds groups as long as their code lines have no more than blanks before a code of few digits,
/// and lines end with a line feed; answers where the first other one begins.
std::size_t addPlainLines(std::string_view text, std::size_t begin, GroupList& list) {
    constexpr std::ptrdiff_t kMostDigits = 4;
    if (!text.ends_with('\n')) return begin;  // else no line goes on behind the text
    const char* at = text.data() + begin;
    const char* const end = text.data() + text.size();
    while (at < end) {
        const char* digit = at;
        while (*digit == ' ') ++digit;
        const char* const first = digit;
        int code = 0;
        for (; *digit >= '0' && *digit <= '9' && digit - first < kMostDigits; ++digit)
            code = code * 10 + (*digit - '0');
        if (digit == first) break;
        if (*digit == '\r') ++digit;
        if (*digit != '\n' || digit + 1 == end) break;
        const char* const value = digit + 1;
        const char* const feed = static_cast<const char*>(
            std::memchr(value, '\n', static_cast<std::size_t>(end - value)));
        const char* const stop = feed > value && feed[-1] == '\r' ? feed - 1 : feed;
        list.add(Group(code, std::string_view(value, static_cast<std::size_t>(stop - value))));
        at = feed + 1;
    }
    return static_cast<std::size_t>(at - text.data());
}

}  // namespace

void addGroups(std::string_view bytes, const DxfForm& form, GroupList& list) {
    constexpr std::size_t kBytesOfGroup = 12;  // about
    list.reserve(bytes.size() / kBytesOfGroup + 1);
    const bool lines = form.isText() && !form.anyLineEnd;
    std::size_t at = lines ? addPlainLines(bytes, 0, list) : 0;
    Tag tag;
    while (form.next(bytes, at, tag)) {
        list.add(form.group(bytes, tag, list));
        if (lines) at = addPlainLines(bytes, at, list);
    }
}

std::optional<Group> findGroup(std::string_view bytes, const DxfForm& form, int code,
                               GroupList& list) {
    bool inBrackets = false;
    Tag tag;
    for (std::size_t at = 0; form.next(bytes, at, tag) && tag.code != kApplicationCode;) {
        if (tag.code == kBracketCode)
            inBrackets = tag.valueEnd > tag.valueBegin && bytes[tag.valueBegin] == '{';
        else if (tag.code == code && !inBrackets)
            return form.group(bytes, tag, list);
    }
    return std::nullopt;
}

}  // namespace mor::host
