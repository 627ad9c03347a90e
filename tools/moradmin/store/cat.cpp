#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/values.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

int runCat(Session& session, const Options& options) {
    std::vector<std::wstring> paths;
    for (const std::string& word : options.arguments) paths.push_back(filePath(session, word));
    for (const std::wstring& path : paths) {
        if (!isStoredFile(session, path)) refuseMissing(session, path);
        const CMORAdsLispVar value = valueOf(session, path);
        if (options.json)
            printJson(valueJson(options, path, value));
        else if (options.raw && CMORAdsLisp::StringP(value))
            std::cout << utf8(host::stringOf(value)) << "\n";
        else
            std::cout << host::lispText(value) << "\n";
    }
    return kDone;
}

}  // namespace mor::tool
