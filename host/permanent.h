#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace mor::host {

/// State that outlives every static destructor of the program: it is made on first use of its
/// function and never destroyed, so objects that end late may still print, count and release
/// through the host.
template <typename T>
class Permanent {
public:
    Permanent() { std::construct_at(get()); }
    ~Permanent() = default;
    Permanent(const Permanent&) = delete;
    Permanent& operator=(const Permanent&) = delete;

    [[nodiscard]] T* get() noexcept { return std::launder(reinterpret_cast<T*>(m_storage)); }
    [[nodiscard]] T& operator*() noexcept { return *get(); }
    [[nodiscard]] T* operator->() noexcept { return get(); }

private:
    alignas(T) std::byte m_storage[sizeof(T)];
};

}  // namespace mor::host
