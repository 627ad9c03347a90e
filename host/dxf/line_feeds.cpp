#include "host/dxf/line_feeds.h"

#include <algorithm>
#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mor::host {

namespace {

constexpr std::size_t kBlock = 64;

/// Puts the offset of every set bit behind `out`, and answers where the next one belongs.
inline std::uint32_t* appendBits(std::uint64_t bits, std::uint32_t offset, std::uint32_t* out) {
    for (; bits != 0; bits &= bits - 1)
        *out++ = offset + static_cast<std::uint32_t>(std::countr_zero(bits));
    return out;
}

// Each looks at whole blocks and answers behind the last offset. There is room for all of them.
using Finder = std::uint32_t* (*)(const char* text, std::size_t size, std::uint32_t base,
                                  std::uint32_t* out);

#if defined(__x86_64__)
std::uint32_t* findWithSse2(const char* text, std::size_t size, std::uint32_t base,
                            std::uint32_t* out) {
    const __m128i feed = _mm_set1_epi8('\n');
    for (std::size_t at = 0; at < size; at += kBlock) {
        std::uint64_t mask = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const __m128i bytes =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at + 16 * i));
            const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, feed)));
            mask |= std::uint64_t{bits} << (16 * i);
        }
        out = appendBits(mask, base + static_cast<std::uint32_t>(at), out);
    }
    return out;
}

__attribute__((target("avx2,bmi"))) std::uint32_t* findWithAvx2(const char* text, std::size_t size,
                                                                std::uint32_t base,
                                                                std::uint32_t* out) {
    const __m256i feed = _mm256_set1_epi8('\n');
    for (std::size_t at = 0; at < size; at += kBlock) {
        const auto* const block = reinterpret_cast<const __m256i*>(text + at);
        const __m256i low = _mm256_cmpeq_epi8(_mm256_loadu_si256(block), feed);
        const __m256i high = _mm256_cmpeq_epi8(_mm256_loadu_si256(block + 1), feed);
        std::uint64_t bits = static_cast<std::uint32_t>(_mm256_movemask_epi8(low)) |
                             std::uint64_t{static_cast<std::uint32_t>(_mm256_movemask_epi8(high))}
                                 << 32U;
        for (; bits != 0; bits &= bits - 1)
            *out++ = base + static_cast<std::uint32_t>(at) +
                     static_cast<std::uint32_t>(__builtin_ctzll(bits));
    }
    return out;
}

Finder bestFinder() { return __builtin_cpu_supports("avx2") ? findWithAvx2 : findWithSse2; }
#else
std::uint32_t* findPlainly(const char* text, std::size_t size, std::uint32_t base,
                           std::uint32_t* out) {
    for (std::size_t at = 0; at < size; at += kBlock) {
        std::uint64_t mask = 0;
        for (std::size_t i = 0; i < kBlock; ++i) mask |= std::uint64_t{text[at + i] == '\n'} << i;
        out = appendBits(mask, base + static_cast<std::uint32_t>(at), out);
    }
    return out;
}

Finder bestFinder() { return findPlainly; }
#endif

}  // namespace

void appendLineFeeds(std::string_view text, std::uint32_t base, std::vector<std::uint32_t>& feeds) {
    static const Finder find = bestFinder();
    constexpr std::size_t kStretch = std::size_t{64} * 1024;
    std::size_t count = feeds.size();
    for (std::size_t at = 0; at < text.size(); at += kStretch) {
        const std::size_t size = std::min(kStretch, text.size() - at);
        if (feeds.size() < count + size + kBlock) feeds.resize(2 * (count + size + kBlock));
        const auto begin = base + static_cast<std::uint32_t>(at);
        const std::uint32_t* end = find(text.data() + at, size, begin, feeds.data() + count);
        // The last block may reach beyond the text.
        while (end != feeds.data() + count && end[-1] >= begin + size) --end;
        count = static_cast<std::size_t>(end - feeds.data());
    }
    feeds.resize(count);
}

}  // namespace mor::host
