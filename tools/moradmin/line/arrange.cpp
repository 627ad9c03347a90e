#include "tools/moradmin/line/arrange.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/rules.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

bool isOnDisk(const std::string& word, bool folders) {
    std::error_code code;
    const auto type = std::filesystem::status(word, code).type();
    return type == std::filesystem::file_type::regular ||
           (folders && type == std::filesystem::file_type::directory);
}

/// Names of the store hold no dots, so what holds one is hardly meant as a path.
bool isStorePath(const std::string& word, const Options& options) {
    return word.starts_with('/') && !isOnDisk(word, options.folders);
}

/// DRAWING:/PATH; the path goes behind the other words.
void splitSpot(Options& options) {
    const std::size_t colon = options.drawing.rfind(":/");
    if (colon == std::string::npos || colon == 0 || isOnDisk(options.drawing, false)) return;
    options.arguments.push_back(options.drawing.substr(colon + 1));
    options.drawing.erase(colon);
}

/// A path in front of the drawing, where a drawing stands behind it.
void refusePathFirst(const Options& options) {
    if (options.inScript || !options.drawing.starts_with('/') || options.arguments.empty()) return;
    std::error_code code;
    if (std::filesystem::exists(options.drawing, code) || !isOnDisk(options.arguments[0], false))
        return;
    throw Failure(kUsage, "the drawing stands first: \"moradmin " + options.command + " " +
                              options.arguments[0] + " " + options.drawing + " ...\"");
}

}  // namespace

void arrangeWords(Options& options, const Command& command) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kNoDrawing)) return;
    if (has(kFolderFirst) && !options.inScript) std::swap(options.drawing, options.arguments[0]);
    if (has(kSpot) && !options.inScript) splitSpot(options);
    refusePathFirst(options);
    options.drawings = {options.drawing};
    if (!has(kSeveral) || options.inScript) return;
    std::vector<std::string> words = std::move(options.arguments);
    words.insert(words.begin(), options.drawing);
    options.arguments.clear();
    options.drawings.clear();
    if (has(kPatternFirst)) {
        options.arguments.push_back(words.front());
        words.erase(words.begin());
    } else if (has(kPatternLast)) {
        options.arguments.push_back(words.back());
        words.pop_back();
    }
    for (std::string& word : words) {
        const bool path =
            has(kStorePaths) && !options.drawings.empty() && isStorePath(word, options);
        (path ? options.arguments : options.drawings).push_back(std::move(word));
    }
    options.drawing = options.drawings.front();
    if (has(kStorePaths) && static_cast<int>(options.arguments.size()) > command.most)
        throw Failure(kUsage, "one path is taken, not " + options.arguments[0] + " and " +
                                  options.arguments[1]);
    if (std::ranges::count(options.drawings, "-") > 1)
        throw Failure(kUsage, "- is stdin, which holds one drawing");
    if (std::ranges::find(options.drawings, "") != options.drawings.end())
        throw Failure(kUsage, "the name of a drawing is wanted");
}

}  // namespace mor::tool
