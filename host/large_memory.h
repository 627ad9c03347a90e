#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

/// Memory for what is as large as a drawing. The system gives fresh memory page by page, at a cost
/// that exceeds that of reading what goes there: much of it is asked for in large pages.
namespace mor::host {

/// Memory of that many bytes, all 0 where `zeroed`; to be given back with the same size. Throws
/// std::bad_alloc.
[[nodiscard]] void* takeLargeMemory(std::size_t bytes, bool zeroed);
void giveLargeMemoryBack(void* memory, std::size_t bytes) noexcept;

/// For vectors that grow with a drawing.
template <typename T>
struct LargeAllocator {
    using value_type = T;

    LargeAllocator() = default;
    template <typename U>
    // NOLINTNEXTLINE: vectors make one from the other
    LargeAllocator(const LargeAllocator<U>& /*other*/) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
        return static_cast<T*>(takeLargeMemory(count * sizeof(T), false));
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        giveLargeMemoryBack(memory, count * sizeof(T));
    }
    friend bool operator==(const LargeAllocator& /*a*/, const LargeAllocator& /*b*/) {
        return true;
    }
};

template <typename T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

/// Bytes that are filled where they lie. All are 0 at first.
class LargeBytes {
public:
    LargeBytes() = default;
    explicit LargeBytes(std::size_t size)
        : m_size(size), m_data(static_cast<char*>(takeLargeMemory(size, true)), Back{size}) {}
    explicit LargeBytes(std::string_view bytes) : LargeBytes(bytes.size()) {
        bytes.copy(data(), bytes.size());
    }

    LargeBytes(LargeBytes&& other) noexcept
        : m_size(std::exchange(other.m_size, 0)), m_data(std::move(other.m_data)) {}
    LargeBytes& operator=(LargeBytes&& other) noexcept {
        m_size = std::exchange(other.m_size, 0);
        m_data = std::move(other.m_data);
        return *this;
    }
    LargeBytes(const LargeBytes&) = delete;
    LargeBytes& operator=(const LargeBytes&) = delete;
    ~LargeBytes() = default;

    [[nodiscard]] char* data() { return m_data.get(); }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool empty() const { return m_size == 0; }
    /// Forgets what stands behind.
    void shorten(std::size_t size) { m_size = size; }
    // NOLINTNEXTLINE: they are read as any text is
    operator std::string_view() const { return {m_data.get(), m_size}; }

private:
    struct Back {
        std::size_t size;
        void operator()(char* memory) const noexcept { giveLargeMemoryBack(memory, size); }
    };
    std::size_t m_size = 0;
    std::unique_ptr<char, Back> m_data{nullptr, Back{0}};
};

}  // namespace mor::host
