#pragma once

#include <optional>

/// Code lines, as the scan of a whole file looks at them.
namespace mor::host {

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

}  // namespace mor::host
