#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace mor {

/// A growable array of owning pointers, in order of appending. Whatever is still listed at its end
/// is deleted in list order. `T` may be incomplete where only the type is named.
template <typename T>
class OwnedList {
public:
    OwnedList() = default;
    ~OwnedList() { clear(); }
    OwnedList(const OwnedList&) = delete;
    OwnedList& operator=(const OwnedList&) = delete;

    /// Takes the object over and returns it. When memory is short the object is deleted, the list
    /// unchanged.
    T* append(std::unique_ptr<T> item) {
        m_items.push_back(std::move(item));
        return m_items.back().get();
    }
    /// Makes room so that the next `append` cannot fail.
    void reserveOne() { m_items.reserve(m_items.size() + 1); }

    /// Takes the object out, the order of the others stays; null when it is not listed.
    [[nodiscard]] std::unique_ptr<T> take(const T* item) noexcept {
        const auto found = std::ranges::find(m_items, item, &std::unique_ptr<T>::get);
        if (found == m_items.end()) return nullptr;
        std::unique_ptr<T> taken = std::move(*found);
        m_items.erase(found);
        return taken;
    }
    /// Deletes the objects of which `isMeant` is true, in list order.
    template <typename Predicate>
    void removeIf(Predicate isMeant) noexcept {
        std::erase_if(m_items, [&](const std::unique_ptr<T>& item) { return isMeant(*item); });
    }
    /// Takes the object out and deletes it; false when it is not listed.
    bool remove(const T* item) noexcept { return take(item) != nullptr; }

    [[nodiscard]] bool contains(const T* item) const noexcept {
        return std::ranges::find(m_items, item, &std::unique_ptr<T>::get) != m_items.end();
    }
    /// Deletes every object in list order. The list already looks empty to their destructors; what
    /// they append is deleted too.
    void clear() noexcept {
        while (!m_items.empty()) {
            std::vector<std::unique_ptr<T>> items = std::exchange(m_items, {});
            for (std::unique_ptr<T>& item : items) item.reset();
        }
    }
    [[nodiscard]] std::size_t size() const noexcept { return m_items.size(); }

private:
    std::vector<std::unique_ptr<T>> m_items;
};

}  // namespace mor
