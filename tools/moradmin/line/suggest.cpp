#include "tools/moradmin/line/suggest.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace mor::tool {

namespace {

constexpr std::size_t kMostListed = 12;
constexpr std::size_t kLongestWord = 200;

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

/// How many letters have to be put in, left out, exchanged for others or with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        last = row;
    }
    return last[b.size()];
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
    if (word.empty() || word.size() > kLongestWord) return {};
    std::string best;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& candidate : candidates) {
        if (candidate.size() > kLongestWord || candidate == word) continue;
        const std::size_t found = distance(word, candidate);
        if (found >= least || found >= candidate.size()) continue;
        least = found;
        best = candidate;
    }
    return best;
}

std::string hintFor(std::string_view word, const std::vector<std::string>& candidates) {
    if (const std::string near = nearest(word, candidates); !near.empty())
        return "; did you mean \"" + near + "\"?";
    if (candidates.empty()) return {};
    std::string text = candidates.size() == 1 ? "; there is" : "; there are";
    for (std::size_t i = 0; i < candidates.size() && i < kMostListed; ++i)
        text += " " + candidates[i];
    if (candidates.size() > kMostListed)
        text += " and " + std::to_string(candidates.size() - kMostListed) + " more";
    return text;
}

}  // namespace mor::tool
