#include "xref/handle_table.h"

#include "platform/runtime.h"

#include <algorithm>

namespace mor {

bool HandleTable::less(const Entry& a, const Entry& b) const {
    return compareNoCase(textOf(a), textOf(b)) < 0;
}

void HandleTable::add(std::wstring_view handle, const EntityName& entity) {
    m_entries.push_back({m_texts.size(), handle.size(), entity});
    for (const wchar_t c : handle) m_texts += toUpper(c);
}

void HandleTable::order() {
    const auto before = [this](const Entry& a, const Entry& b) { return less(a, b); };
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
    const auto same = [this](const Entry& a, const Entry& b) {
        return equalNoCase(textOf(a), textOf(b));
    };
    m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), same), m_entries.end());
}

EntityName HandleTable::find(std::wstring_view handle) const {
    const auto found = std::ranges::lower_bound(
        m_entries, handle,
        [](std::wstring_view a, std::wstring_view b) { return compareNoCase(a, b) < 0; },
        [this](const Entry& entry) { return textOf(entry); });
    const bool known = found != m_entries.end() && equalNoCase(textOf(*found), handle);
    return known ? found->entity : EntityName{};
}

}  // namespace mor
