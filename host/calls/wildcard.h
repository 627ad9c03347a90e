#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

enum class WildcardCase { Sensitive, Ignored };

/// A compiled wildcard pattern with the platform's rules (`acutWcMatch` lists them). Besides: an
/// empty pattern matches the empty text only, an unclosed `[` and a back quote at the end are
/// literal, `[z-a]` matches nothing. Matching takes at most pattern times text steps, however many
/// stars there are.
class Wildcard {
public:
    explicit Wildcard(std::wstring_view pattern, WildcardCase caseRule = WildcardCase::Sensitive);
    [[nodiscard]] bool matches(std::wstring_view text) const;

private:
    enum class Kind { Literal, AnyRun, AnyOne, Digit, Letter, Other, OneOf, NoneOf };
    struct Range {
        wchar_t first;
        wchar_t last;
    };
    struct Element {
        Kind kind = Kind::Literal;
        wchar_t literal = 0;
        std::vector<Range> set{};
    };
    struct Alternative {
        bool negated = false;
        std::vector<Element> elements{};
    };

    void compile(std::wstring_view pattern);
    static Element readElement(std::wstring_view pattern, std::size_t& position);
    static bool readSet(std::wstring_view pattern, std::size_t& position, Element& element);
    [[nodiscard]] static bool matchesOne(const Element& element, wchar_t c);
    [[nodiscard]] static bool matchesAll(const std::vector<Element>& elements,
                                         std::wstring_view text);

    std::vector<Alternative> m_alternatives;
    WildcardCase m_case;
};

}  // namespace mor::host
