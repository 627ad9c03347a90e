#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/way.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

struct Branch {
    std::wstring path;
    std::vector<Store::Entry> entries;
    std::size_t next = 0;
};

/// What lies in a directory that was entered.
Json treeJson(Session& session, const std::wstring& directory, Way& way) {
    Json entries = Json::array();
    for (const Store::Entry& entry : session.store().entries(directory)) {
        Json object{{"name", utf8(entry.name)}, {"kind", entry.directory ? "directory" : "file"}};
        const std::wstring path = joined(directory, entry.name);
        if (entry.directory) object["entries"] = Json::array();
        if (entry.directory && way.show(path)) {
            object["entries"] = treeJson(session, path, way);
            way.leave();
        }
        entries.push_back(std::move(object));
    }
    return entries;
}

int printTreeJson(Session& session, const Options& options, const std::wstring& top) {
    Json object = jsonHead(options);
    object["path"] = utf8(top);
    Way way(session);
    const bool entered = session.hasDirectories() && way.show(top);
    object["entries"] = entered ? treeJson(session, top, way) : Json::array();
    printJson(object);
    return kDone;
}

}  // namespace

int runTree(Session& session, const Options& options) {
    const std::wstring top = directoryPath(session, options.argument("/"));
    if (!isStoredDirectory(session, top)) refuseMissing(session, top);
    if (options.json) return printTreeJson(session, options, top);
    std::cout << coloured(utf8(top), true) << "\n";
    if (!session.hasDirectories()) return kDone;
    Way way(session);
    if (!way.show(top)) return kDone;
    std::vector<Branch> open = {{top, session.store().entries(top), 0}};
    while (!open.empty()) {
        Branch& branch = open.back();
        if (branch.next == branch.entries.size()) {
            open.pop_back();
            way.leave();
            continue;
        }
        for (std::size_t i = 0; i + 1 < open.size(); ++i)
            std::cout << (open[i].next < open[i].entries.size() ? "│   " : "    ");
        const Store::Entry entry = branch.entries[branch.next++];
        std::cout << (branch.next < branch.entries.size() ? "├── " : "└── ")
                  << coloured(utf8(entry.name) + (entry.directory ? "/" : ""), entry.directory)
                  << "\n";
        if (!entry.directory) continue;
        const std::wstring path = joined(branch.path, entry.name);
        if (way.show(path)) open.push_back({path, session.store().entries(path), 0});
    }
    return kDone;
}

}  // namespace mor::tool
