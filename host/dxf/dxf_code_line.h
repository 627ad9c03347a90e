#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

/// Code lines and names, as the scan of a whole file looks at them.
namespace mor::host {

[[nodiscard]] inline std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

/// A group code: digits, blanks around them, a sign perhaps. Empty when the line is none.
[[nodiscard]] inline std::optional<int> parseCode(const char* begin, const char* end) {
    while (begin != end && (*begin == ' ' || *begin == '\t')) ++begin;
    while (end != begin && (end[-1] == ' ' || end[-1] == '\t')) --end;
    const bool negative = begin != end && *begin == '-';
    if (negative) ++begin;
    if (begin == end || end - begin > 6) return std::nullopt;
    int value = 0;
    for (; begin != end; ++begin) {
        const unsigned digit = static_cast<unsigned char>(*begin) - unsigned{'0'};
        if (digit > 9) return std::nullopt;
        value = value * 10 + static_cast<int>(digit);
    }
    return negative ? -value : value;
}

/// Reads a code line in its usual form: blanks, one to four digits, the line end. Answers where its
/// line feed stands; null for any other form, which is looked at with more care.
[[nodiscard]] inline const char* plainCode(const char* at, const char* end, unsigned& code) {
    while (at != end && *at == ' ') ++at;
    const char* const digits = at;
    unsigned value = 0;
    for (; at != end; ++at) {
        const unsigned digit = static_cast<unsigned char>(*at) - unsigned{'0'};
        if (digit > 9) break;
        value = value * 10 + digit;
    }
    if (at == digits || at - digits > 4) return nullptr;
    if (at != end && *at == '\r') ++at;
    code = value;
    return at != end && *at == '\n' ? at : nullptr;
}

/// Groups of which the index notes something.
[[nodiscard]] inline bool isNoted(unsigned code) {
    switch (code) {
        case 0:
        case 2:
        case 5:
        case 67:
        case 100:
        case 102:
        case 105:
        case 330:
        case 1001:
            return true;
        default:
            return false;
    }
}

[[nodiscard]] inline bool equalsNoCaseAscii(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               const auto fold = [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; };
               return fold(x) == fold(y);
           });
}

[[nodiscard]] inline bool startsNoCaseAscii(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && equalsNoCaseAscii(text.substr(0, start.size()), start);
}

}  // namespace mor::host
