#include "xref/handle_table.h"

#include "platform/runtime.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace mor {

namespace {

constexpr wchar_t kLastAscii = 0x7F;

}  // namespace

void HandleTable::append(std::string& texts, std::wstring_view handle) {
    handle.remove_prefix(std::min(handle.find_first_not_of(L'0'), handle.size()));
    for (const wchar_t c : handle) {
        const wchar_t upper = toUpper(c);
        if (upper <= kLastAscii)
            texts += static_cast<char>(upper);
        else
            texts += narrow({&upper, 1});
    }
}

void HandleTable::add(std::wstring_view handle, const EntityName& entity) {
    const std::size_t begin = m_texts.size();
    append(m_texts, handle);
    m_entries.push_back({static_cast<std::uint32_t>(begin),
                         static_cast<std::uint32_t>(m_texts.size() - begin), entity});
}

void HandleTable::order() {
    const auto before = [this](const Entry& a, const Entry& b) { return textOf(a) < textOf(b); };
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
    const auto equal = [this](const Entry& a, const Entry& b) { return textOf(a) == textOf(b); };
    m_entries.erase(std::unique(m_entries.begin(), m_entries.end(), equal), m_entries.end());
}

EntityName HandleTable::find(std::wstring_view handle) const {
    std::string text;
    append(text, handle);
    const auto found =
        std::ranges::lower_bound(m_entries, std::string_view(text), {},
                                 [this](const Entry& entry) { return textOf(entry); });
    const bool known = found != m_entries.end() && textOf(*found) == text;
    return known ? found->entity : EntityName{};
}

}  // namespace mor
