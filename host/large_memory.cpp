#include "host/large_memory.h"

#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>

namespace mor::host {

namespace {

/// What the system calls a large page nearly everywhere; asking for others does no harm.
constexpr std::size_t kLargePage = std::size_t{2} << 20U;
/// From here on a large page is worth while, for all of the memory or for its last part.
constexpr std::size_t kMuch = kLargePage / 2;

std::size_t mapped(std::size_t bytes) { return (bytes + kLargePage - 1) / kLargePage * kLargePage; }

}  // namespace

void* takeLargeMemory(std::size_t bytes, bool zeroed) {
    if (bytes < kMuch) {
        void* const memory = zeroed ? std::calloc(bytes == 0 ? 1 : bytes, 1)  // NOLINT
                                    : std::malloc(bytes == 0 ? 1 : bytes);    // NOLINT
        if (memory == nullptr) throw std::bad_alloc();
        return memory;
    }
    // Enough for a beginning where a large page can begin; what is too much goes back.
    const std::size_t size = mapped(bytes);
    if (size < bytes || size + kLargePage < size) throw std::bad_alloc();
    void* const all = ::mmap(nullptr, size + kLargePage, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) throw std::bad_alloc();
    char* const begin = static_cast<char*>(all);
    const std::size_t before =
        (kLargePage - reinterpret_cast<std::uintptr_t>(all) % kLargePage) % kLargePage;
    if (before != 0) ::munmap(begin, before);
    if (before != kLargePage) ::munmap(begin + before + size, kLargePage - before);
#ifdef MADV_HUGEPAGE
    const std::size_t rest = bytes % kLargePage;
    const std::size_t large = rest != 0 && rest < kMuch ? size - kLargePage : size;
    ::madvise(begin + before, large, MADV_HUGEPAGE);
#endif
    return begin + before;
}

void giveLargeMemoryBack(void* memory, std::size_t bytes) noexcept {
    if (bytes < kMuch)
        std::free(memory);  // NOLINT
    else if (memory != nullptr)
        ::munmap(memory, mapped(bytes));
}

}  // namespace mor::host
