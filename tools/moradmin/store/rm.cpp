#include "dwgfs/path_rules.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/patterns.h"
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

void removeWord(Session& session, const Options& options, const std::string& word) {
    const std::wstring path = wide(word);
    if (options.recursive && !isStoredFile(session, path)) {
        const std::wstring directory = directoryPath(session, word);
        if (!isStoredDirectory(session, directory)) refuseMissing(session, directory);
        removeNamed(session, directory);
        return;
    }
    const std::wstring bare =
        path.size() > 1 && path.ends_with(L'/') ? path.substr(0, path.size() - 1) : path;
    if (isDirPath(bare) && isStoredDirectory(session, bare))
        refuse(session, bare, word + " is a directory; with -r it goes, and everything below it");
    const std::wstring file = filePath(session, word);
    if (!isStoredFile(session, file)) refuseMissing(session, file);
    removeFile(session, file);
}

}  // namespace

int runRm(Session& session, const Options& options) {
    for (const std::string& word : options.arguments) {
        if (!isPathPattern(word)) {
            removeWord(session, options, word);
            continue;
        }
        for (const Match& match : pathsMeant(session, word)) {
            // What lay below a directory that is gone has gone with it.
            const bool there = match.directory ? isStoredDirectory(session, match.path)
                                               : isStoredFile(session, match.path);
            if (there) removeWord(session, options, utf8(match.path));
        }
    }
    return kDone;
}

}  // namespace mor::tool
