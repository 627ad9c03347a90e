#pragma once

#include <string>
#include <string_view>

namespace mor {

/// Character classes by Unicode, whatever the locale of the machine.
[[nodiscard]] bool isAlnum(wchar_t c) noexcept;
[[nodiscard]] bool isAlpha(wchar_t c) noexcept;
[[nodiscard]] wchar_t toUpper(wchar_t c) noexcept;

/// Negative, 0 or positive: the order of the two texts without regard to case.
[[nodiscard]] int compareNoCase(std::wstring_view a, std::wstring_view b) noexcept;

[[nodiscard]] inline bool equalNoCase(std::wstring_view a, std::wstring_view b) noexcept {
    return a.size() == b.size() && compareNoCase(a, b) == 0;
}

[[nodiscard]] std::wstring upperCase(std::wstring_view text);

/// Key order of maps whose keys are compared without regard to case.
struct LessNoCase {
    using is_transparent = void;
    [[nodiscard]] bool operator()(std::wstring_view a, std::wstring_view b) const noexcept {
        return compareNoCase(a, b) < 0;
    }
};

/// UTF-8 text for the narrow-text matchers; a character that has no code point becomes U+FFFD.
[[nodiscard]] std::string narrow(std::wstring_view text);

}  // namespace mor
