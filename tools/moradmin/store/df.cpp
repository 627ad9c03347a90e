#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"

#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

int runDf(Session& session, const Options& options) {
    const StoreState& state = session.safeState();
    Json directories = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < state.reachable; ++i) {
        const std::wstring& path = state.directories[i].path;
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
