#include "platform/pattern.h"

#include "host/calls/wildcard.h"
#include "host/host.h"
#include "platform/geometry.h"
#include "platform/output_calls.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace mor::host {

namespace {

/// Reads a pattern as it goes along: it is not worth putting it into another form first.
class Matcher {
public:
    Matcher(std::wstring_view pattern, std::wstring_view text)
        : m_at(pattern.data()), m_end(m_at + pattern.size()), m_noClose(m_end), m_text(text) {}

    bool run() {
        while (true) {
            const bool negated = m_at != m_end && *m_at == L'~';
            if (negated) ++m_at;
            if (matchesAlternative() != negated) return true;
            while (!alternativeEnds()) skipElement();
            if (m_at == m_end) return false;
            ++m_at;
        }
    }

private:
    using Place = const wchar_t*;

    [[nodiscard]] bool alternativeEnds() const { return m_at == m_end || *m_at == L','; }
    [[nodiscard]] static bool isLiteral(wchar_t wide);
    bool matchesAlternative();
    [[nodiscard]] Place closeOf(Place open);
    void skipElement();
    bool takeElement(wchar_t c);
    bool takeSet(wchar_t c, Place close);

    Place m_at;
    Place m_end;
    Place m_noClose;  ///< from here on no set is closed
    std::wstring_view m_text;
};

/// Whether the character stands for itself wherever it stands.
bool Matcher::isLiteral(wchar_t wide) {
    constexpr auto bits = [] {
        std::array<std::uint64_t, 2> special{};
        for (const char c : std::string_view("#@.*?[`,")) {
            const auto code = static_cast<unsigned char>(c);
            special[code / 64] |= std::uint64_t{1} << (code % 64);
        }
        return special;
    }();
    const auto code =
        static_cast<std::uint32_t>(wide);  // NOLINT(bugprone-signed-char-misuse): no char
    return code >= 128 || (bits[code / 64] >> (code % 64) & 1U) == 0;
}

/// The pattern is looked through no further than it takes to tell.
bool Matcher::matchesAlternative() {
    Place text = m_text.data();
    const Place textEnd = text + m_text.size();
    Place behindStar = nullptr;  // the last one; none yet
    Place starText = nullptr;    // where the text goes on behind what it takes
    while (true) {
        while (text != textEnd && m_at != m_end && *m_at == *text && isLiteral(*m_at)) {
            ++m_at;
            ++text;
        }
        if (m_at != m_end && *m_at == L'*') {
            while (m_at != m_end && *m_at == L'*') ++m_at;
            if (alternativeEnds()) return true;
            behindStar = m_at;
            starText = text;
        } else if (text == textEnd) {
            return alternativeEnds();
        } else if (!alternativeEnds() && takeElement(*text)) {
            ++text;
            continue;
        } else if (behindStar == nullptr) {
            return false;
        } else {  // only the last star need ever take more: what lies before it has matched
            m_at = behindStar;
            ++starText;
        }
        if (isLiteral(*m_at)) starText = std::find(starText, textEnd, *m_at);
        text = starText;
    }
}

/// Where the set that opens there ends; null when nothing closes it.
Matcher::Place Matcher::closeOf(Place open) {
    Place from = open + 1;
    if (from != m_end && *from == L'~') ++from;
    if (m_noClose - from < 2) return nullptr;
    ++from;  // one right at the front is an element
    const Place close = std::find(from, m_noClose, L']');
    if (close != m_noClose) return close;
    m_noClose = from;
    return nullptr;
}

void Matcher::skipElement() {
    const Place close = *m_at == L'[' ? closeOf(m_at) : nullptr;
    if (close != nullptr) m_at = close;
    if (*m_at == L'`' && m_at + 1 != m_end) ++m_at;
    ++m_at;
}

/// Whether the element at hand, no star, stands for the character; it is left behind if so.
bool Matcher::takeElement(wchar_t c) {
    const wchar_t element = *m_at;
    bool matched = true;
    switch (element) {
        case L'?':
            break;
        case L'#':
            matched = isAlnum(c) && !isAlpha(c);
            break;
        case L'@':
            matched = isAlpha(c);
            break;
        case L'.':
            matched = !isAlnum(c);
            break;
        case L'`':
            matched = (m_at + 1 != m_end ? m_at[1] : element) == c;
            if (matched && m_at + 1 != m_end) ++m_at;
            break;
        case L'[':
            if (const Place close = closeOf(m_at)) return takeSet(c, close);
            [[fallthrough]];
        default:
            matched = element == c;
    }
    if (matched) ++m_at;
    return matched;
}

bool Matcher::takeSet(wchar_t c, Place close) {
    Place at = m_at + 1;
    const bool negated = *at == L'~';
    if (negated) ++at;
    bool found = false;
    while (at < close && !found) {
        const bool range = at + 2 < close && at[1] == L'-';
        found = *at <= c && c <= (range ? at[2] : *at);
        at += range ? 3 : 1;
    }
    if (found == negated) return false;
    m_at = close + 1;
    return true;
}

}  // namespace

bool matchesWildcard(std::wstring_view pattern, std::wstring_view text) {
    return Matcher(pattern, text).run();
}

Wildcard::Wildcard(std::wstring_view pattern, WildcardCase caseRule)
    : m_pattern(caseRule == WildcardCase::Ignored ? upperCase(pattern) : std::wstring(pattern)),
      m_case(caseRule) {}

bool Wildcard::matches(std::wstring_view text) const {
    return m_case == WildcardCase::Ignored ? matchesWildcard(m_pattern, upperCase(text))
                                           : matchesWildcard(m_pattern, text);
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
    return mor::host::matchesWildcard(pattern, text) ? RTNORM : RTERROR;
}

MOR_Wildcard::MOR_Wildcard(const char* pattern) : m_pattern(widened(pattern)) {}

MOR_Wildcard::~MOR_Wildcard() = default;

std::size_t MOR_Wildcard::index(const char* text, std::size_t* length, std::size_t start) const {
    const std::size_t size = std::strlen(text);
    const bool matched =
        start <= size && mor::host::matchesWildcard(m_pattern, widened(text + start));
    if (length != nullptr) *length = matched ? size - start : 0;
    return matched ? start : npos;
}
