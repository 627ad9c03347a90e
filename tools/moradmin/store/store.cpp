#include "tools/moradmin/store/store.h"

namespace mor::tool {

std::vector<Store::Entry> Store::entries(const std::wstring& path) {
    std::wstring own = path;  // resolving needs a path of its own to cut and join
    CMORStringList all;
    CMORStringList directories;
    std::vector<Entry> result;
    if (!getAll(own.data(), all, All) || !getAll(own.data(), directories, Directories))
        return result;
    // Both lists are in stored order, so the next directory is the next name that equals it.
    std::size_t next = 0;
    for (std::size_t i = 0; i < all.Entries(); ++i) {
        const std::wstring name = all.Nth(i);
        const bool directory = next < directories.Entries() && name == directories.Nth(next);
        if (directory) ++next;
        result.push_back({name, directory});
    }
    return result;
}

bool Store::makeDirectory(const std::wstring& path) {
    std::wstring own = path;
    CMOREntity directory;
    return getDir(own.data(), true, directory);
}

bool Store::connectAnchor(CMOREntity& anchor) {
    if (getBlockEntity(anchor) && anchor.Type().CompareNoCase(L"ATTDEF") == 0) return true;
    anchor.Disconnect();
    return makeBlock() && getBlockEntity(anchor);
}

bool Store::makeLinked(CMOREntity& parent, const std::wstring& name, const std::wstring& path,
                       CMOREntity& directory) {
    return makeDir(parent, name.c_str(), path.c_str(), directory);
}

mor::EntityName Store::directoryName(const std::wstring& path) {
    std::wstring own = path;
    CMOREntity directory;
    ads_name name = {};
    if (getDir(own.data(), false, directory)) directory.GetEName(name);
    return mor::EntityName(name);
}

}  // namespace mor::tool
