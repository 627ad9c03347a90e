#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"

#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

int runDf(Session& session, const Options& options) {
    const StoreState& state = session.safeState();
    Json directories = Json::array();
    std::vector<std::vector<std::string>> rows;
    const std::wstring top = directoryPath(session, options.argument("/"));
    if (!isStoredDirectory(session, top)) refuseMissing(session, top);
    const std::wstring below = top == L"/" ? top : top + L"/";
    for (std::size_t i = 0; i < state.reachable; ++i) {
        const std::wstring& path = state.directories[i].path;
        if (path != top && !path.starts_with(below)) continue;
        const long free = session.store().getFreeMem(path.c_str());
        const std::size_t entries = session.store().entries(path).size();
        const long used = host::kRoomPerRecord - free;
        directories.push_back(
            {{"path", utf8(path)}, {"used", used}, {"free", free}, {"entries", entries}});
        rows.push_back(
            {std::to_string(used), std::to_string(free), std::to_string(entries), utf8(path)});
    }
    if (options.json) {
        Json object = jsonHead(options);
        object["directories"] = std::move(directories);
        printJson(object);
    } else {
        printTable({">USED", ">FREE", ">ENTRIES", "PATH"}, rows);
    }
    return kDone;
}

}  // namespace mor::tool
