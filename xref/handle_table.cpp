#include "xref/handle_table.h"

#include "platform/runtime.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace mor {

namespace {

constexpr wchar_t kLastAscii = 0x7F;
constexpr std::size_t kKeyBytes = sizeof(std::uint64_t);

}  // namespace

std::uint64_t HandleTable::keyOf(std::wstring_view handle, std::string& text) {
    handle.remove_prefix(std::min(handle.find_first_not_of(L'0'), handle.size()));
    std::uint64_t key = 0;
    if (handle.size() <= kKeyBytes) {
        std::size_t room = kKeyBytes;
        for (const wchar_t c : handle) {
            const bool small = c >= L'a' && c <= L'z';
            if (c > kLastAscii || c <= L'\0') break;
            const auto byte = static_cast<std::uint64_t>(small ? c - L'a' + L'A' : c);
            key |= byte << (8 * --room);
        }
        if (room + handle.size() == kKeyBytes) return key;
    }
    text = narrow(upperCase(handle));
    return 0;
}

void HandleTable::add(std::wstring_view handle, const EntityName& entity) {
    std::string text;
    const std::uint64_t key = keyOf(handle, text);
    if (text.empty())
        m_entries.push_back({key, entity});
    else
        m_long.try_emplace(std::move(text), entity);
}

void HandleTable::order() {
    const auto before = [](const Entry& a, const Entry& b) { return a.key < b.key; };
    // Runs that stand in order already are merged, neighbour with neighbour, until one is left.
    std::vector<std::ptrdiff_t> ends = {0};
    for (auto at = m_entries.begin(); at != m_entries.end();) {
        at = std::is_sorted_until(at, m_entries.end(), before);
        ends.push_back(at - m_entries.begin());
    }
    while (ends.size() > 2) {
        std::vector<std::ptrdiff_t> merged = {0};
        for (std::size_t i = 2; i < ends.size(); i += 2) {
            const auto begin = m_entries.begin();
            std::inplace_merge(begin + ends[i - 2], begin + ends[i - 1], begin + ends[i], before);
            merged.push_back(ends[i]);
        }
        if (ends.size() % 2 == 0) merged.push_back(ends.back());
        ends = std::move(merged);
    }
    // Of equal ones the first stays: merging keeps their order.
    const auto equal = [](const Entry& a, const Entry& b) { return a.key == b.key; };
    m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), equal), m_entries.end());
}

EntityName HandleTable::find(std::wstring_view handle) const {
    std::string text;
    const std::uint64_t key = keyOf(handle, text);
    if (!text.empty()) {
        const auto found = m_long.find(text);
        return found == m_long.end() ? EntityName{} : found->second;
    }
    const auto found = std::ranges::lower_bound(m_entries, key, {}, &Entry::key);
    return found != m_entries.end() && found->key == key ? found->entity : EntityName{};
}

}  // namespace mor
