#include "tools/moradmin/changes/contents.h"

#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/store/paths.h"

#include <ostream>

namespace mor::tool {

Contents contentsOf(const StoreState& state) {
    Contents contents;
    for (std::size_t i = 0; i < state.reachable; ++i) {
        const StoredDirectory& directory = state.directories[i];
        if (directory.path != L"/") contents[directory.path].directory = true;
        for (const host::RecordAttribute& item : directory.attributes.items)
            if (isFileName(item.name))
                contents.try_emplace(joined(directory.path, item.name),
                                     Held{false, host::lispText(item.value)});
    }
    return contents;
}

const char* Difference::kind() const {
    if (!before) return "added";
    return after ? "changed" : "removed";
}

std::vector<Difference> differences(const Contents& before, const Contents& after) {
    std::vector<Difference> all;
    for (const auto& [path, held] : before) {
        const auto other = after.find(path);
        if (other == after.end())
            all.push_back({path, held, std::nullopt});
        else if (other->second != held)
            all.push_back({path, held, other->second});
    }
    for (const auto& [path, held] : after)
        if (!before.contains(path)) all.push_back({path, std::nullopt, held});
    return all;
}

void printDifference(std::ostream& out, const Difference& difference) {
    const auto& [path, before, after] = difference;
    const Held& shown = after ? *after : *before;
    out << (!before ? "+ " : after ? "~ " : "- ") << utf8(path) << (shown.directory ? "/" : "");
    if (before && !before->directory) out << "\t" << before->lisp;
    if (before && after) out << "\t->";
    if (after && !after->directory) out << "\t" << after->lisp;
    out << "\n";
}

void addDifference(Json& object, const Difference& difference) {
    const auto lisp = [](const std::optional<Held>& held) {
        return held && !held->directory ? Json(held->lisp) : Json(nullptr);
    };
    object["change"] = difference.kind();
    object["path"] = utf8(difference.path);
    object["before"] = lisp(difference.before);
    object["after"] = lisp(difference.after);
}

}  // namespace mor::tool
