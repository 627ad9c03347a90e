#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/patterns.h"
#include "tools/moradmin/store/values.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// The files that the words mean; directories that a pattern matches are passed over.
std::vector<std::wstring> filesMeant(Session& session, const Options& options) {
    std::vector<std::wstring> paths;
    for (const std::string& word : options.arguments) {
        if (!isPathPattern(word)) {
            if (word.ends_with('/') || isStoredDirectory(session, wide(word)))
                refuseMissing(session, directoryPath(session, word));
            paths.push_back(filePath(session, word));
            continue;
        }
        const std::size_t before = paths.size();
        for (const Match& match : pathsMeant(session, word))
            if (!match.directory) paths.push_back(match.path);
        if (paths.size() == before)
            throw Failure(kRefused, session.message("no file matches " + word), word);
    }
    return paths;
}

}  // namespace

int runCat(Session& session, const Options& options) {
    if (options.line && !options.raw) throw Failure(kUsage, "--line belongs to --raw");
    for (const std::wstring& path : filesMeant(session, options)) {
        if (!isStoredFile(session, path)) refuseMissing(session, path);
        const CMORAdsLispVar value = valueOf(session, path);
        if (options.json)
            printJson(valueJson(options, path, value));
        else if (options.raw && CMORAdsLisp::StringP(value))
            std::cout << utf8(host::stringOf(value)) << (options.line ? "\n" : "");
        else
            std::cout << host::lispText(value) << "\n";
    }
    return kDone;
}

}  // namespace mor::tool
