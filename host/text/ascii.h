#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// What is the same in every encoding of a drawing's texts.
namespace mor::host {

/// Without the blanks and tabs around it.
[[nodiscard]] inline std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

/// With blanks in front up to that width.
[[nodiscard]] inline std::string padLeft(std::string text, std::size_t width) {
    if (text.size() < width) text.insert(0, width - text.size(), ' ');
    return text;
}

[[nodiscard]] inline char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Without regard to the case of ASCII letters.
[[nodiscard]] inline bool equalsNoCaseAscii(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, upperAscii, upperAscii);
}

[[nodiscard]] inline bool startsNoCaseAscii(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && equalsNoCaseAscii(text.substr(0, start.size()), start);
}

}  // namespace mor::host
