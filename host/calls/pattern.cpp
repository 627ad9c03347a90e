#include "platform/pattern.h"

#include "host/calls/wildcard.h"
#include "host/host.h"
#include "platform/geometry.h"
#include "platform/output_calls.h"
#include "platform/runtime.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace mor::host {

Wildcard::Wildcard(std::wstring_view pattern, WildcardCase caseRule) : m_case(caseRule) {
    if (m_case == WildcardCase::Ignored)
        compile(upperCase(pattern));
    else
        compile(pattern);
}

void Wildcard::compile(std::wstring_view pattern) {
    std::size_t position = 0;
    while (true) {
        Alternative alternative;
        if (position < pattern.size() && pattern[position] == L'~') {
            alternative.negated = true;
            ++position;
        }
        while (position < pattern.size() && pattern[position] != L',')
            alternative.elements.push_back(readElement(pattern, position));
        m_alternatives.push_back(std::move(alternative));
        if (position == pattern.size()) return;
        ++position;
    }
}

Wildcard::Element Wildcard::readElement(std::wstring_view pattern, std::size_t& position) {
    Element element;
    const wchar_t c = pattern[position];
    if (c == L'[' && readSet(pattern, position, element)) return element;
    ++position;
    switch (c) {
        case L'*':
            element.kind = Kind::AnyRun;
            break;
        case L'?':
            element.kind = Kind::AnyOne;
            break;
        case L'#':
            element.kind = Kind::Digit;
            break;
        case L'@':
            element.kind = Kind::Letter;
            break;
        case L'.':
            element.kind = Kind::Other;
            break;
        case L'`':
            element.literal = position < pattern.size() ? pattern[position++] : c;
            break;
        default:
            element.literal = c;
    }
    return element;
}

bool Wildcard::readSet(std::wstring_view pattern, std::size_t& position, Element& element) {
    std::size_t begin = position + 1;
    const bool negated = begin < pattern.size() && pattern[begin] == L'~';
    if (negated) ++begin;
    const std::size_t end = pattern.find(L']', begin + 1);  // one right at the front is an element
    if (end == std::wstring_view::npos) return false;
    element.kind = negated ? Kind::NoneOf : Kind::OneOf;
    for (std::size_t i = begin; i < end; ++i) {
        const bool range = i + 2 < end && pattern[i + 1] == L'-';
        element.set.push_back({pattern[i], range ? pattern[i + 2] : pattern[i]});
        if (range) i += 2;
    }
    position = end + 1;
    return true;
}

bool Wildcard::matchesOne(const Element& element, wchar_t c) {
    const auto holds = [c](Range range) { return range.first <= c && c <= range.last; };
    switch (element.kind) {
        case Kind::Literal:
            return element.literal == c;
        case Kind::Digit:
            return isAlnum(c) && !isAlpha(c);
        case Kind::Letter:
            return isAlpha(c);
        case Kind::Other:
            return !isAlnum(c);
        case Kind::OneOf:
            return std::ranges::any_of(element.set, holds);
        case Kind::NoneOf:
            return std::ranges::none_of(element.set, holds);
        default:
            return true;
    }
}

bool Wildcard::matchesAll(const std::vector<Element>& elements, std::wstring_view text) {
    std::size_t element = 0;
    std::size_t position = 0;
    std::size_t starElement = elements.size();  // behind the last star; none yet
    std::size_t starPosition = 0;
    bool star = false;
    while (position < text.size()) {
        if (element < elements.size() && elements[element].kind == Kind::AnyRun) {
            star = true;
            starElement = ++element;
            starPosition = position;
        } else if (element < elements.size() && matchesOne(elements[element], text[position])) {
            ++element;
            ++position;
        } else if (star) {  // only the last star need ever take more: what lies before it has
                            // matched
            element = starElement;
            position = ++starPosition;
        } else {
            return false;
        }
    }
    return std::ranges::all_of(elements.begin() + static_cast<std::ptrdiff_t>(element),
                               elements.end(),
                               [](const Element& rest) { return rest.kind == Kind::AnyRun; });
}

bool Wildcard::matches(std::wstring_view text) const {
    std::wstring upper;
    if (m_case == WildcardCase::Ignored) {
        upper = upperCase(text);
        text = upper;
    }
    return std::ranges::any_of(m_alternatives, [text](const Alternative& alternative) {
        return matchesAll(alternative.elements, text) != alternative.negated;
    });
}

}  // namespace mor::host

namespace {

// Bytes that are no UTF-8 count as one character each.
std::wstring widened(std::string_view bytes) {
    if (std::optional<std::wstring> text = mor::host::fromUtf8(bytes)) return *std::move(text);
    std::wstring result;
    for (const char c : bytes) result += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return result;
}

}  // namespace

int acutWcMatch(const wchar_t* text, const wchar_t* pattern) {
    if (text == nullptr || pattern == nullptr) return RTERROR;
    return mor::host::Wildcard{pattern}.matches(text) ? RTNORM : RTERROR;
}

MOR_Wildcard::MOR_Wildcard(const char* pattern) : m_pattern(widened(pattern)) {}

MOR_Wildcard::~MOR_Wildcard() = default;

std::size_t MOR_Wildcard::index(const char* text, std::size_t* length, std::size_t start) const {
    const std::size_t size = std::strlen(text);
    const bool matched =
        start <= size && mor::host::Wildcard{m_pattern}.matches(widened(text + start));
    if (length != nullptr) *length = matched ? size - start : 0;
    return matched ? start : npos;
}
