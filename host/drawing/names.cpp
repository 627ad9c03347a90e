#include "host/drawing/names.h"

#include "host/drawing/drawing.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace mor::host {

ContainerNumber Names::findTable(std::string_view table) const {
    const auto& containers = m_drawing.containers();
    for (; m_tablesBelow < containers.size(); ++m_tablesBelow)
        if (containers[m_tablesBelow].kind == ContainerKind::Table)
            m_tables.push_back(m_tablesBelow);
    const auto found = std::ranges::find_if(m_tables, [&](ContainerNumber number) {
        return equalsNoCaseAscii(containers[number].name, table);
    });
    return found == m_tables.end() ? kNoContainer : *found;
}

void Names::learn(Symbols& symbols, RecordNumber number) const {
    if (const auto name = m_drawing.textOf(number, kNameCode))
        symbols.try_emplace(upperCase(*name), number);
}

void Names::addSymbol(ContainerNumber table, RecordNumber number) {
    m_last = {};
    if (const auto known = m_symbols.find(table); known != m_symbols.end())
        learn(known->second, number);
}

RecordNumber Names::findSymbol(std::string_view table, std::wstring_view name) const {
    const ContainerNumber container = findTable(table);
    if (container == kNoContainer) return 0;
    // A store asks for its layer with every write.
    if (container == m_last.table && name == m_last.name) return m_last.number;
    const auto [known, added] = m_symbols.try_emplace(container);
    if (added)
        for (RecordNumber at = m_drawing.nextMember(container, 0); at != 0;
             at = m_drawing.nextMember(container, at))
            learn(known->second, at);
    const auto found = known->second.find(upperCase(name));
    const RecordNumber number = found == known->second.end() ? 0 : found->second;
    m_last = {container, std::wstring(name), number};
    return number;
}

ContainerNumber Names::findBlock(std::wstring_view name) const {
    if (!m_blocks) {
        m_blocks.emplace();
        const auto& containers = m_drawing.containers();
        for (ContainerNumber number = 1; number < containers.size(); ++number)
            if (containers[number].kind == ContainerKind::Block && !containers[number].name.empty())
                m_blocks->try_emplace(upperCase(m_drawing.containerName(number)), number);
    }
    const auto found = m_blocks->find(upperCase(name));
    return found == m_blocks->end() ? kNoContainer : found->second;
}

void Names::addBlock(std::wstring_view name, ContainerNumber block) {
    if (m_blocks) m_blocks->try_emplace(upperCase(name), block);
}

const std::map<std::wstring, std::size_t>& Names::insertCounts() const {
    if (m_insertCounts) return *m_insertCounts;
    std::map<std::wstring, std::size_t> counts;
    const std::uint16_t insert = m_drawing.typeNumber("INSERT");
    for (RecordNumber number = 1; number <= m_drawing.lastRecord(); ++number) {
        const RecordEntry& entry = m_drawing.entry(number);
        if (entry.type != insert || entry.has(kErased | kGone)) continue;
        if (const auto name = m_drawing.textOf(number, kNameCode)) ++counts[upperCase(*name)];
    }
    return m_insertCounts.emplace(std::move(counts));
}

}  // namespace mor::host
