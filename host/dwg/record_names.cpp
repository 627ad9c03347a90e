#include "host/dwg/record_names.h"

#include "host/text/ascii.h"
#include "host/text/group_codes.h"

#include <algorithm>

namespace mor::host {

namespace {

std::string folded(std::string_view name) {
    std::string upper(name);
    std::ranges::transform(upper, upper.begin(), upperAscii);
    return upper;
}

}  // namespace

std::uint64_t RecordNames::find(std::string_view table, std::string_view name) const {
    const std::string key(table);
    if (name.empty()) {
        const auto first = m_first.find(key);
        return first == m_first.end() ? 0 : first->second;
    }
    const auto names = m_names.find(key);
    if (names == m_names.end()) return 0;
    const auto found = names->second.find(folded(name));
    return found == names->second.end() ? 0 : found->second;
}

RecordNames::RecordNames(const DwgFile& file, const EditSet& edits) {
    for (const Container& table : edits.containers) {
        if (table.kind != ContainerKind::Table) continue;
        auto& names = m_names[table.name];
        const auto learn = [&](RecordNumber number, std::string_view name) {
            m_first.try_emplace(table.name, edits.records[number].handle);
            names.try_emplace(folded(name), edits.records[number].handle);
        };
        for (RecordNumber at = table.first; at <= table.last; ++at)
            if (!edits.records[at].has(kEdge)) learn(at, file.nameOf(edits.records[at].handle));
        for (const RecordNumber at : table.added)
            if (const auto made = edits.made.find(at); made != edits.made.end())
                if (const Group* name = made->second.find(kNameCode)) learn(at, name->text());
    }
}

}  // namespace mor::host
