#include "host/drawing/handle_table.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

/// Sorts what rises for long stretches, as handles do in the order of a file.
template <typename Item>
void sortRuns(std::vector<Item>& items) {
    using Place = typename std::vector<Item>::iterator;
    constexpr std::size_t kManyRuns = 64;
    std::vector<Place> bounds{items.begin()};
    while (bounds.back() != items.end() && bounds.size() <= kManyRuns)
        bounds.push_back(std::is_sorted_until(bounds.back(), items.end()));
    if (bounds.back() != items.end()) return std::sort(items.begin(), items.end());
    while (bounds.size() > 2) {
        std::vector<Place> fewer;
        for (std::size_t i = 0; i < bounds.size(); i += 2) {
            fewer.push_back(bounds[i]);
            if (i + 2 < bounds.size()) std::inplace_merge(bounds[i], bounds[i + 1], bounds[i + 2]);
        }
        if (fewer.back() != items.end()) fewer.push_back(items.end());
        bounds = std::move(fewer);
    }
}

}  // namespace

HandleTable::HandleTable(const RecordEntries& records, RecordNumber lastFileRecord,
                         std::uint64_t next, KeptHandles kept)
    : m_records(records), m_lastFileRecord(lastFileRecord), m_kept(std::move(kept)), m_next(next) {}

void HandleTable::build() const {
    if (m_built) return;
    m_built = true;
    constexpr std::uint64_t kSparse = 8;  // a table by handle may have so many places a record
    std::uint64_t highest = 0;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number)
        highest = std::max(highest, m_records[number].handle);
    if (highest / kSparse > m_lastFileRecord) return buildSorted();
    m_dense.resize(static_cast<std::size_t>(highest + 1));
    std::map<std::uint64_t, std::size_t> doubled;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number) {
        const std::uint64_t handle = m_records[number].handle;
        if (handle == 0) continue;
        RecordNumber& first = m_dense[static_cast<std::size_t>(handle)];
        if (first == 0)
            first = number;
        else
            ++doubled.try_emplace(handle, 1).first->second;
    }
    m_doubled.assign(doubled.begin(), doubled.end());
}

void HandleTable::buildSorted() const {
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number)
        if (m_records[number].handle != 0) m_sorted.emplace_back(m_records[number].handle, number);
    sortRuns(m_sorted);
    std::size_t kept = 0;
    for (std::size_t at = 0; at < m_sorted.size();) {
        std::size_t next = at;
        while (next < m_sorted.size() && m_sorted[next].first == m_sorted[at].first) ++next;
        if (next - at > 1) m_doubled.emplace_back(m_sorted[at].first, next - at);
        m_sorted[kept++] = m_sorted[at];
        at = next;
    }
    m_sorted.resize(kept);
}

RecordNumber HandleTable::inFile(std::uint64_t handle) const {
    build();
    if (handle < m_dense.size()) return m_dense[static_cast<std::size_t>(handle)];
    const auto found = std::ranges::lower_bound(m_sorted, handle, {},
                                                &std::pair<std::uint64_t, RecordNumber>::first);
    return found == m_sorted.end() || found->first != handle ? 0 : found->second;
}

void HandleTable::setInFile(std::uint64_t handle, RecordNumber number) {
    if (handle < m_dense.size()) {
        m_dense[static_cast<std::size_t>(handle)] = number;
        return;
    }
    const auto found = std::ranges::lower_bound(m_sorted, handle, {},
                                                &std::pair<std::uint64_t, RecordNumber>::first);
    if (found != m_sorted.end() && found->first == handle) found->second = number;
}

const std::vector<std::pair<std::uint64_t, std::size_t>>& HandleTable::doubled() const {
    build();
    return m_doubled;
}

RecordNumber HandleTable::find(std::uint64_t handle) const {
    if (handle == 0) return 0;
    const auto made = m_made.find(handle);
    const RecordNumber number = made != m_made.end() ? made->second : inFile(handle);
    return m_records[number].has(kGone) ? 0 : number;
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
    RecordNumber next = 1;
    while (next <= m_lastFileRecord && (next == number || m_records[next].handle != old)) ++next;
    setInFile(old, next <= m_lastFileRecord ? next : 0);
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
