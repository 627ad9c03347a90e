#include "tools/moradmin/references/patterns.h"

#include "platform/output_calls.h"
#include "platform/runtime.h"
#include "platform/types.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <string_view>

namespace mor::tool {

namespace {

void splitInto(std::string_view word, std::vector<std::string>& patterns) {
    std::string pattern;
    bool bracketed = false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = word[i];
        const bool closes = word.find(']', i) != std::string_view::npos;
        if (c == ',' && !bracketed) {
            patterns.push_back(std::move(pattern));
            pattern.clear();
            continue;
        }
        if (c == '[' && !bracketed && closes) bracketed = true;
        if (c == ']') bracketed = false;
        pattern += c;
        if (c == '`' && !bracketed && i + 1 < word.size()) pattern += word[++i];
    }
    patterns.push_back(std::move(pattern));
}

}  // namespace

std::vector<std::string> splitPatterns(const std::vector<std::string>& words) {
    std::vector<std::string> patterns;
    for (const std::string& word : words) splitInto(word, patterns);
    return patterns;
}

TextPatterns::TextPatterns(const std::vector<std::string>& words) {
    for (const std::string& pattern : splitPatterns(words))
        m_patterns.push_back(upperCase(wide(pattern)));
}

bool TextPatterns::match(const std::string& text) const {
    if (m_patterns.empty()) return true;
    const std::wstring upper = upperCase(wide(text));
    return std::ranges::any_of(m_patterns, [&](const std::wstring& pattern) {
        return acutWcMatch(upper.c_str(), pattern.c_str()) == RTNORM;
    });
}

}  // namespace mor::tool
