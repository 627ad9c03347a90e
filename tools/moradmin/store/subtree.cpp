#include "tools/moradmin/store/subtree.h"

#include "dwgfs/path_rules.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/removing.h"
#include "tools/moradmin/store/storing.h"
#include "tools/moradmin/store/way.h"

#include <utility>

namespace mor::tool {

namespace {

void addBelow(Session& session, const std::wstring& directory, Way& way,
              std::vector<Stored>& items) {
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        Stored item{path, entry.directory, {}};
        if (!entry.directory) session.store().read(path.c_str(), item.value);
        items.push_back(std::move(item));
        if (!entry.directory || !way.copy(path)) continue;
        addBelow(session, path, way, items);
        way.leave();
    }
}

}  // namespace

std::vector<Stored> everythingBelow(Session& session, const std::wstring& directory) {
    std::vector<Stored> items;
    Way way(session);
    if (session.hasDirectories() && way.copy(directory)) addBelow(session, directory, way, items);
    return items;
}

void storeAll(Session& session, const std::vector<Stored>& items, const std::wstring& from,
              const std::wstring& to) {
    const auto moved = [&](const std::wstring& path) {
        const std::wstring rest = from == L"/" ? path : path.substr(from.size());
        std::wstring target = (to == L"/" ? L"" : to) + rest;
        if (target.size() > kMaxPathLength)
            throw Failure(kRefused, session.message("a path would have more than 1023 characters"),
                          utf8(path));
        return target;
    };
    for (const Stored& item : items) {
        if (item.directory)
            putDirectory(session, moved(item.path));
        else
            putValue(session, moved(item.path), item.value);
    }
    const auto fresh = Session::freshStore();
    for (const Stored& item : items)
        if (item.directory)
            confirmDirectory(session, *fresh, moved(item.path));
        else
            confirmValue(session, *fresh, moved(item.path), item.value);
}

void storeBelow(Session& session, const std::vector<Stored>& items, const std::wstring& directory,
                bool replace) {
    if (replace && isStoredDirectory(session, directory) && session.hasDirectories())
        removeEverything(session, directory);
    if (directory != L"/") {
        putDirectory(session, directory);
        confirmDirectory(session, *Session::freshStore(), directory);
    }
    storeAll(session, items, L"/", L"/");
}

}  // namespace mor::tool
