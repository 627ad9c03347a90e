#include "host/dxf/dxf_record.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace mor::host {

namespace {

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

bool sameApplication(std::string_view a, std::string_view b) {
    const auto fold = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
    return std::ranges::equal(a, b, {}, fold, fold);
}

std::string padLeft(std::string text, std::size_t width) {
    if (text.size() < width) text.insert(0, width - text.size(), ' ');
    return text;
}

constexpr int kApplication = 1001;   // begins the extended data
constexpr int kGroupOfGroups = 102;  // "{..." opens groups that belong together, "}" closes them

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
    bool extended = false;
    Tag tag;
    for (std::size_t at = 0; nextTag(m_bytes, at, tag); m_tags.push_back(tag)) {
        if (tag.code != kApplication || extended) continue;
        extended = true;
        m_extended = m_tags.size();
    }
    if (!extended) m_extended = m_tags.size();
}

std::optional<std::string_view> findValue(std::string_view bytes, int code) {
    bool inGroup = false;
    Tag tag;
    for (std::size_t at = 0; nextTag(bytes, at, tag) && tag.code != kApplication;) {
        const std::string_view value = bytes.substr(tag.valueBegin, tag.valueEnd - tag.valueBegin);
        if (tag.code == kGroupOfGroups)
            inGroup = value.starts_with("{");
        else if (tag.code == code && !inGroup)
            return value;
    }
    return std::nullopt;
}

std::string_view TagList::bare(const Tag& tag) const { return withoutBlanks(value(tag)); }

const Tag* TagList::find(int code) const {
    bool inGroup = false;
    for (std::size_t i = 0; i < m_extended; ++i) {
        const Tag& tag = m_tags[i];
        if (tag.code == kGroupOfGroups)
            inGroup = value(tag).starts_with("{");
        else if (tag.code == code && !inGroup)
            return &tag;
    }
    return nullptr;
}

const Tag* TagList::findFrom(std::size_t from, int code) const {
    for (std::size_t i = from; i < m_tags.size(); ++i)
        if (m_tags[i].code == code) return &m_tags[i];
    return nullptr;
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
    const bool wide = (code >= 90 && code <= 99) || (code >= 420 && code <= 459) || code == 1071;
    if (style.padded) digits = padLeft(std::move(digits), wide ? 9 : 6);
    return line(style, code, digits);
}

std::string realText(double value) {
    std::array<char, 40> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    static_cast<void>(error);
    std::string text(buffer.data(), end);
    const std::size_t exponent = text.find('e');
    if (text.find('.') == std::string::npos)
        text.insert(exponent == std::string::npos ? text.size() : exponent, ".0");
    return text;
}

std::string realLine(const LineStyle& style, int code, double value) {
    return line(style, code, realText(value));
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    text = withoutBlanks(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t value = 0;
    const char* const stop = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), stop, value);
    if (error != std::errc{}) return std::nullopt;
    if (end == stop) return value;
    // Other writers put 1071 as 1.95059E+06.
    const auto real = parseReal(text);
    if (!real || std::trunc(*real) != *real || std::fabs(*real) > 9.0e15) return std::nullopt;
    return static_cast<std::int64_t>(*real);
}

std::optional<double> parseReal(std::string_view text) {
    text = withoutBlanks(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0.0;
    const char* const stop = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), stop, value);
    if (error == std::errc::result_out_of_range && end == stop) {
        // Too small for a double reads as nothing, too large is no number.
        return text.find("e-") != std::string_view::npos ||
                       text.find("E-") != std::string_view::npos
                   ? std::optional(0.0)
                   : std::nullopt;
    }
    if (error != std::errc{} || end != stop || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::uint64_t parseHandle(std::string_view text) noexcept {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc{} || end != text.data() + text.size()) return 0;
    return value;
}

std::string handleToText(std::uint64_t handle) {
    if (handle == 0) return {};
    std::array<char, 16> digits{};
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), handle, 16);
    static_cast<void>(error);
    std::string text(digits.data(), end);
    for (char& c : text)
        if (c >= 'a') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::vector<ExtendedRange> extendedRanges(const TagList& record, std::string_view application) {
    std::vector<ExtendedRange> ranges;
    const auto& tags = record.tags();
    for (std::size_t i = record.extendedBegin(); i < tags.size(); ++i) {
        if (tags[i].code != 1001 || !sameApplication(record.bare(tags[i]), application)) continue;
        ExtendedRange range{i, i + 1};
        for (std::size_t k = i + 1; k < tags.size() && tags[k].code != 1001; ++k)
            if (tags[k].code != 999) range.end = k + 1;
        ranges.push_back(range);
    }
    return ranges;
}

long extendedCost(int code, std::size_t valueBytes) {
    switch (code) {
        case 1000:
        case 1003:
            return 2 + static_cast<long>(valueBytes);
        case 1004:
            return 2 + static_cast<long>(valueBytes / 2);  // hexadecimal digits in text
        case 1002:
            return 2;
        case 1005:
        case 1040:
        case 1041:
        case 1042:
            return 9;
        case 1010:
        case 1011:
        case 1012:
        case 1013:
            return 25;
        case 1070:
            return 3;
        case 1071:
            return 5;
        default:
            return 0;  // 1001, 1020-1033 (parts of a point), comments
    }
}

}  // namespace mor::host
