#include "platform/output_calls.h"
#include "platform/pattern.h"
#include "platform/runtime.h"
#include "platform/types.h"
#include "tests/fuzz/drawing_input.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using View = std::wstring_view;
constexpr std::size_t kLongest = 200;

bool inSet(View set, wchar_t c) {
    for (; !set.empty(); set.remove_prefix(1)) {
        const bool range = set.size() > 2 && set[1] == L'-';
        if (set[0] <= c && c <= set[range ? 2 : 0]) return true;
        if (range) set.remove_prefix(2);
    }
    return false;
}

bool matchesOne(View pattern, wchar_t c) {
    if (pattern == L"?") return true;
    if (pattern == L"#") return mor::isAlnum(c) && !mor::isAlpha(c);
    if (pattern == L"@") return mor::isAlpha(c);
    if (pattern == L".") return !mor::isAlnum(c);
    if (pattern.size() == 2 && pattern[0] == L'`') return pattern[1] == c;
    if (pattern.size() == 1) return pattern[0] == c;
    const bool negated = pattern[1] == L'~';
    return inSet(pattern.substr(negated ? 2 : 1, pattern.size() - (negated ? 3 : 2)), c) != negated;
}

/// Length of what stands for one character at the front.
std::size_t elementSize(View pattern) {
    if (pattern[0] == L'`') return std::min<std::size_t>(2, pattern.size());
    if (pattern[0] != L'[') return 1;
    const std::size_t first = pattern.size() > 1 && pattern[1] == L'~' ? 3 : 2;
    const std::size_t end = pattern.find(L']', first);
    return end == View::npos ? 1 : end + 1;
}

/// Notes after each element how much of the text may be taken.
bool matchesAlternative(View pattern, View text) {
    std::vector<bool> taken(text.size() + 1);
    taken[0] = true;
    while (!pattern.empty()) {
        const View element = pattern.substr(0, elementSize(pattern));
        std::vector<bool> then(text.size() + 1);
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (element == L"*")
                then[i] = taken[i] || (i > 0 && then[i - 1]);
            else if (i > 0)
                then[i] = taken[i - 1] && matchesOne(element, text[i - 1]);
        }
        taken = then;
        pattern.remove_prefix(element.size());
    }
    return taken.back();
}

bool matches(View pattern, View text) {
    while (true) {
        const bool negated = pattern.starts_with(L'~');
        if (negated) pattern.remove_prefix(1);
        std::size_t end = 0;
        while (end < pattern.size() && pattern[end] != L',')
            end += elementSize(pattern.substr(end));
        if (matchesAlternative(pattern.substr(0, end), text) != negated) return true;
        if (end >= pattern.size()) return false;
        pattern.remove_prefix(end + 1);
    }
}

}  // namespace

/// The matcher against one that keeps all ways open: a pattern, a NUL, a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::wstring all(data, data + size);
    const std::size_t end = std::min(all.find(L'\0'), all.size());
    const std::wstring pattern = all.substr(0, std::min(end, kLongest));
    const std::wstring text = all.substr(std::min(end + 1, all.size()), kLongest).c_str();
    const bool answer = acutWcMatch(text.c_str(), pattern.c_str()) == RTNORM;
    mor::fuzz::require(answer == matches(pattern, text), "the matcher differs");
    return 0;
}
