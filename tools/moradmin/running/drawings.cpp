#include "tools/moradmin/running/drawings.h"

#include "tools/moradmin/output.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace mor::tool {

namespace {

namespace fs = std::filesystem;

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Endings such as ".dxf", of a list such as "dxf,.dwg".
std::vector<std::string> endingsOf(const std::string& list) {
    std::vector<std::string> all;
    std::istringstream words(list);
    for (std::string word; std::getline(words, word, ',');)
        if (!word.empty()) all.push_back(lower(word.starts_with('.') ? word : "." + word));
    return all;
}

std::vector<std::string> drawingsBelow(const fs::path& folder,
                                       const std::vector<std::string>& endings) {
    std::vector<std::string> found;
    std::error_code code;
    for (fs::recursive_directory_iterator at(folder, code), end; at != end; at.increment(code)) {
        if (code) break;
        std::error_code unknown;
        if (!at->is_regular_file(unknown)) {
            if (at->is_directory(unknown) && ::access(at->path().c_str(), R_OK | X_OK) != 0) {
                printNote(at->path().string() + ": the folder cannot be read");
                at.disable_recursion_pending();
            }
            continue;
        }
        const std::string ending = lower(at->path().extension().string());
        if (std::ranges::find(endings, ending) == endings.end()) continue;
        // "./a.dxf" is what people call a.dxf.
        found.push_back(folder == "." ? at->path().lexically_normal().string()
                                      : at->path().string());
    }
    if (code) printNote(folder.string() + ": " + code.message());
    std::ranges::sort(found);
    return found;
}

}  // namespace

std::vector<std::string> namedDrawings(const Options& options) {
    std::vector<std::string> all;
    const std::vector<std::string> endings = endingsOf(options.extensions);
    for (const std::string& word : options.drawings) {
        std::error_code code;
        if (!options.folders || !fs::is_directory(word, code)) {
            all.push_back(word);
            continue;
        }
        const std::vector<std::string> below = drawingsBelow(word, endings);
        if (below.empty())
            printNote(word + ": there are no drawings in it (" + options.extensions +
                      "); --ext names other endings");
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

}  // namespace mor::tool
