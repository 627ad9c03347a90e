#include "tools/moradmin/references/places.h"

#include "host/host.h"
#include "tools/moradmin/failure.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

void setReferencePlaces(const Options& options) {
    std::vector<std::filesystem::path> folders(options.referenceFolders.begin(),
                                               options.referenceFolders.end());
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
