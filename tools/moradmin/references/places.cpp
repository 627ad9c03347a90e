#include "tools/moradmin/references/places.h"

#include "host/host.h"
#include "tools/moradmin/failure.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::string_view kAnyDepth = "/**";
constexpr std::size_t kMostFolders = 10000;

/// A folder; behind DIR/** all folders below it too.
void addFolders(const std::string& word, std::vector<std::filesystem::path>& folders) {
    if (!word.ends_with(kAnyDepth)) {
        std::error_code code;
        if (!std::filesystem::is_directory(word, code))
            throw Failure(kUsage, "--xref-path wants a folder that is there, not \"" + word + "\"");
        folders.emplace_back(word);
        return;
    }
    const std::filesystem::path top = word.substr(0, word.size() - kAnyDepth.size());
    std::vector<std::filesystem::path> below = {top.empty() ? "/" : top};
    std::error_code code;
    const auto skip = std::filesystem::directory_options::skip_permission_denied;
    for (std::filesystem::recursive_directory_iterator at(below.front(), skip, code), end;
         !code && at != end; at.increment(code)) {
        std::error_code unknown;
        if (!at->is_directory(unknown)) continue;
        if (below.size() == kMostFolders)
            throw Failure(kUsage, "--xref-path " + word + ": there are more than " +
                                      std::to_string(kMostFolders) + " folders");
        below.push_back(at->path());
    }
    if (code) throw Failure(kUsage, "--xref-path " + word + ": " + code.message());
    std::ranges::sort(below);
    folders.insert(folders.end(), below.begin(), below.end());
}

}  // namespace

void setReferencePlaces(const Options& options) {
    std::vector<std::filesystem::path> folders;
    for (const std::string& word : options.referenceFolders) addFolders(word, folders);
    // What comes from stdin lies nowhere; it is seen from the folder that the tool runs in.
    if (std::ranges::find(options.drawings, "-") != options.drawings.end())
        folders.emplace_back(".");
    std::vector<std::pair<std::string, std::string>> mappings;
    for (const std::string& word : options.referenceMappings) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0)
            throw Failure(kUsage,
                          "--map wants FROM=TO, such as C:\\proj=/srv/proj, not \"" + word + "\"");
        // Like other words of the command line they are seen from the folder that it runs in.
        const std::string to = word.substr(equals + 1);
        mappings.emplace_back(word.substr(0, equals),
                              to.empty() ? to : std::filesystem::absolute(to).string());
    }
    // An empty word must not lift the fence: a variable of a script may not be set.
    std::error_code code;
    if (options.referenceRoot && !std::filesystem::is_directory(*options.referenceRoot, code))
        throw Failure(kUsage, "--xref-root wants a folder that is there, not \"" +
                                  *options.referenceRoot + "\"");
    host::setReferenceRoot(options.referenceRoot.value_or(""));
    host::setReferenceFolders(std::move(folders));
    host::setReferenceMappings(std::move(mappings));
}

}  // namespace mor::tool
