#include "tools/moradmin/damage/store_state.h"

#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"

#include <algorithm>

namespace mor::tool {

std::wstring linkText(const host::RecordAttribute& link) { return host::attributeText(link.value); }

const host::RecordAttribute* StoredDirectory::find(std::wstring_view attribute) const {
    const auto found = std::ranges::find(attributes.items, attribute, &host::RecordAttribute::name);
    return found == attributes.items.end() ? nullptr : &*found;
}

std::wstring StoredDirectory::info() const {
    const host::RecordAttribute* item = find(kInfoAttribute);
    return item == nullptr ? std::wstring() : host::stringOf(item->value);
}

bool StoredDirectory::hasFiles() const {
    return std::ranges::any_of(
        attributes.items, [](const host::RecordAttribute& item) { return isFileName(item.name); });
}

const StoredDirectory* StoreState::directory(std::wstring_view path) const {
    const auto found = byPath.find(path);
    return found == byPath.end() ? nullptr : &directories[found->second];
}

const Finding* StoreState::firstStopping() const {
    const auto found = std::ranges::find(findings, true, &Finding::stops);
    return found == findings.end() ? nullptr : &*found;
}

}  // namespace mor::tool
