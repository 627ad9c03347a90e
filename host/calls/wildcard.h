#pragma once

#include <string>
#include <string_view>

namespace mor::host {

enum class WildcardCase { Sensitive, Ignored };

/// Whether the pattern matches the whole text by the platform's rules (`acutWcMatch` lists them),
/// case included. Besides: an empty pattern matches the empty text only, an unclosed `[` and a back
/// quote at the end are literal, `[z-a]` matches nothing. Takes at most pattern times text steps,
/// however many stars there are, and makes nothing.
[[nodiscard]] bool matchesWildcard(std::wstring_view pattern, std::wstring_view text);

/// A wildcard pattern that is asked more than once.
class Wildcard {
public:
    explicit Wildcard(std::wstring_view pattern, WildcardCase caseRule = WildcardCase::Sensitive);
    [[nodiscard]] bool matches(std::wstring_view text) const;

private:
    std::wstring m_pattern;  ///< in upper case where case is ignored
    WildcardCase m_case;
};

}  // namespace mor::host
