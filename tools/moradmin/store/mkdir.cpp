#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/removing.h"
#include "tools/moradmin/store/storing.h"

#include <string>

namespace mor::tool {

int runMkdir(Session& session, const Options& options) {
    session.refuseDamagedStore();
    for (const std::string& word : options.arguments) {
        const std::wstring path = directoryPath(session, word);
        putDirectory(session, path);
        confirmDirectory(session, *Session::freshStore(), path);
    }
    return kDone;
}

int runRmdir(Session& session, const Options& options) {
    for (const std::string& word : options.arguments) {
        const std::wstring path = directoryPath(session, word);
        if (!isStoredDirectory(session, path)) refuseMissing(session, path);
        if (path == L"/")
            refuse(session, path,
                   "the root directory cannot be removed; \"moradmin wipe\" empties a store");
        if (!session.store().entries(path).empty())
            refuse(session, path,
                   word + " is not empty; \"moradmin rm -r\" removes it all the same");
        removeDirectory(session, path);
    }
    return kDone;
}

}  // namespace mor::tool
