#include "host/drawing/handle_table.h"

#include <algorithm>
#include <utility>

namespace mor::host {

HandleTable::HandleTable(const std::vector<RecordEntry>& records, RecordNumber lastFileRecord,
                         std::uint64_t next, KeptHandles kept)
    : m_records(records), m_lastFileRecord(lastFileRecord), m_kept(std::move(kept)), m_next(next) {}

void HandleTable::build() const {
    if (m_built) return;
    m_built = true;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number)
        if (m_records[number].handle != 0) m_file.emplace_back(m_records[number].handle, number);
    std::ranges::sort(m_file);
    for (auto at = m_file.begin(); at != m_file.end();) {
        const auto next = std::find_if(at, m_file.end(),
                                       [&](const auto& known) { return known.first != at->first; });
        if (next - at > 1) m_doubled.emplace_back(at->first, static_cast<std::size_t>(next - at));
        at = next;
    }
    const auto tail =
        std::ranges::unique(m_file, {}, &std::pair<std::uint64_t, RecordNumber>::first);
    m_file.erase(tail.begin(), tail.end());
}

const std::vector<std::pair<std::uint64_t, std::size_t>>& HandleTable::doubled() const {
    build();
    return m_doubled;
}

RecordNumber HandleTable::find(std::uint64_t handle) const {
    if (handle == 0) return 0;
    if (const auto made = m_made.find(handle); made != m_made.end())
        return m_records[made->second].has(kGone) ? 0 : made->second;
    build();
    const auto found = std::ranges::lower_bound(m_file, handle, {},
                                                &std::pair<std::uint64_t, RecordNumber>::first);
    if (found == m_file.end() || found->first != handle) return 0;
    return m_records[found->second].has(kGone) ? 0 : found->second;
}

std::uint64_t HandleTable::next() const {
    if (!m_keptHandles) {
        m_keptHandles = m_kept(m_next);
        std::ranges::sort(*m_keptHandles);
    }
    while (m_next != 0 &&
           (std::ranges::binary_search(*m_keptHandles, m_next) || m_reserved.contains(m_next)))
        ++m_next;
    return m_next;
}

std::uint64_t HandleTable::take() {
    const std::uint64_t handle = next();
    if (handle == 0) return 0;
    m_gaveHandles = true;
    ++m_next;
    return handle;
}

void HandleTable::note(std::uint64_t handle, RecordNumber number) {
    if (number <= m_lastFileRecord) build();  // of the file alone, as long as it says so
    m_made[handle] = number;
}

void HandleTable::exchange(std::uint64_t handle, RecordNumber number) {
    build();
    const std::uint64_t old = m_records[number].handle;
    m_made[handle] = number;
    std::erase_if(m_file, [&](const auto& known) { return known.first == old; });
    for (RecordNumber other = 1; other <= m_lastFileRecord; ++other)
        if (other != number && m_records[other].handle == old) {
            m_file.insert(std::ranges::lower_bound(m_file, std::pair{old, other}), {old, other});
            break;
        }
}

std::int64_t HandleTable::reservedFor(std::uint64_t handle) const {
    const auto [known, added] = m_reserved.try_emplace(handle, 0);
    if (added) known->second = -static_cast<std::int64_t>(m_reserved.size());
    return known->second;
}

std::uint64_t HandleTable::handleOfReserved(std::int64_t reserved) const {
    for (const auto& [handle, number] : m_reserved)
        if (number == reserved) return handle;
    return 0;
}

}  // namespace mor::host
