#include "dwgfs/path_rules.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/removing.h"

#include <string>

namespace mor::tool {

namespace {

void removeNamed(Session& session, const std::wstring& path) {
    if (path == L"/")
        refuse(session, path,
               "the root directory cannot be removed; \"moradmin wipe\" empties a store");
    removeDirectory(session, path);
}

}  // namespace

int runRm(Session& session, const Options& options) {
    for (const std::string& word : options.arguments) {
        if (options.recursive && !isStoredFile(session, wide(word))) {
            const std::wstring directory = directoryPath(session, word);
            if (!isStoredDirectory(session, directory)) refuseMissing(session, directory);
            removeNamed(session, directory);
            continue;
        }
        if (isDirPath(wide(word)) && isStoredDirectory(session, wide(word)))
            refuse(session, wide(word),
                   word + " is a directory; with -r it goes, and everything below it");
        const std::wstring path = filePath(session, word);
        if (!isStoredFile(session, path)) refuseMissing(session, path);
        removeFile(session, path);
    }
    return kDone;
}

}  // namespace mor::tool
