#include "tools/moradmin/changes/git.h"

#include "tools/moradmin/changes/text_dump.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/shown_text.h"

#include <iostream>
#include <string>

namespace mor::tool {

namespace {

/// Where the words of git stand behind the path.
enum Word : std::size_t { kOldFile = 0, kNewFile = 3, kWords = 6, kNewPath = 6 };

void tellTrouble(const char* side, const TextDump& dump) {
    if (!dump.trouble.empty()) std::cout << "! " << side << ": " << oneLine(dump.trouble) << "\n";
}

}  // namespace

int diffForGit(const Options& options) {
    const std::vector<std::string>& words = options.arguments;
    if (words.size() < kWords)
        throw Failure(kUsage,
                      "--git wants the words that git gives: git config diff.moradmin.command "
                      "\"moradmin diff --git\"");
    const TextDump before = textDumpOf(words[kOldFile]);
    const TextDump after = textDumpOf(words[kNewFile]);
    const std::string& to = words.size() > kNewPath ? words[kNewPath] : options.drawing;
    std::cout << "diff " << oneLine(options.drawing)
              << (to == options.drawing ? "" : " -> " + oneLine(to))
              << (words[kOldFile] == "/dev/null"   ? " (added)"
                  : words[kNewFile] == "/dev/null" ? " (deleted)"
                                                   : "")
              << "\n";
    tellTrouble("before", before);
    tellTrouble("after", after);
    for (const Difference& difference : differences(before.contents, after.contents))
        printDifference(std::cout, difference);
    if (before.outside != after.outside)
        std::cout << "~ drawing" << (before.outside.empty() ? "" : "\t" + oneLine(before.outside))
                  << "\t->" << (after.outside.empty() ? "" : "\t" + oneLine(after.outside)) << "\n";
    return kDone;
}

}  // namespace mor::tool
