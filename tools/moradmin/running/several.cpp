#include "tools/moradmin/running/several.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/running/drawings.h"
#include "tools/moradmin/running/guarded.h"
#include "tools/moradmin/running/jobs.h"
#include "tools/moradmin/running/private_files.h"
#include "tools/moradmin/running/progress.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// How many drawings ended with which exit code.
class Summary {
public:
    void note(int code) { ++m_counts[code]; }
    [[nodiscard]] std::string text(std::size_t drawings) const {
        static constexpr std::array<std::pair<int, const char*>, 6> words = {
            {{kUnreadable, "unreadable"},
             {kDamaged, "damaged"},
             {kUnwritable, "not written"},
             {kRefused, "refused"},
             {kUsage, "called wrongly"},
             {kNo, "answered no"}}};
        std::string text = std::to_string(drawings) + (drawings == 1 ? " drawing" : " drawings");
        const char* between = ": ";
        for (const auto& [code, word] : words) {
            const auto found = m_counts.find(code);
            if (found == m_counts.end()) continue;
            text += between + std::to_string(found->second) + " " + word;
            between = ", ";
        }
        return text;
    }

private:
    std::map<int, std::size_t> m_counts;
};

/// Whether the output has lines in front of which a drawing can stand.
bool hasLines(const Options& options) {
    return !options.json && (options.command != "dump" || options.text || options.textconv);
}

/// Whether the command asks for something that may lie in any of the drawings: it is found when one
/// has it.
bool isSearch(const Options& options) {
    return (commandNamed(options.command)->options & (kPatternFirst | kPatternLast)) != 0;
}

int visitOne(const Options& options, const Visit& visit, bool named) {
    std::optional<PrefixedLines> prefix;
    if (named) prefix.emplace(options.drawing);
    return guarded(options, [&] { return visit(options); });
}

}  // namespace

int overDrawings(const Options& options, const Visit& visit) {
    const std::vector<std::string> files = namedDrawings(options);
    if (files.empty()) return kNo;
    const bool several = files.size() > 1 || options.folders;
    const bool named = hasLines(options) && (several || options.withFilename);
    if (std::ranges::find(files, "-") != files.end()) static_cast<void>(drawingFile("-"));
    Progress progress(files, !options.quiet && several);
    Summary summary;
    int worst = kDone;
    bool found = false;
    const bool searches = isSearch(options);
    const auto done = [&](int code) {
        summary.note(code);
        found = found || code == kDone;
        if (!searches || code != kNo) worst = moreSerious(worst, code);
    };
    const auto visitFile = [&](std::size_t i) {
        Options own = options;
        own.drawing = files[i];
        own.header = options.header && i == 0;
        return visitOne(own, visit, named);
    };
    if (options.jobs > 1 && several) {
        visitAtOnce(files.size(), options.jobs, progress, visitFile, done);
    } else {
        for (std::size_t i = 0; i < files.size(); ++i) {
            progress.begin(i);
            done(visitFile(i));
        }
    }
    progress.end();
    if (several && !options.quiet && !options.json) printNote(summary.text(files.size()));
    return searches && !found ? moreSerious(worst, kNo) : worst;
}

}  // namespace mor::tool
