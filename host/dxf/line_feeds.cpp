#include "host/dxf/line_feeds.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mor::host {

namespace {

constexpr std::size_t kBlock = 64;

using BlockMask = std::uint64_t (*)(const char* block);

/// Bit i: byte i is a line feed. On any processor.
[[maybe_unused]] std::uint64_t plainMask(const char* block) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < kBlock; ++i) mask |= std::uint64_t{block[i] == '\n'} << i;
    return mask;
}

#if defined(__x86_64__)
std::uint64_t sse2Mask(const char* block) {
    const __m128i feed = _mm_set1_epi8('\n');
    std::uint64_t mask = 0;
    for (unsigned i = 0; i < 4; ++i) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, feed)));
        mask |= std::uint64_t{bits} << (16 * i);
    }
    return mask;
}

__attribute__((target("avx2"))) std::uint64_t avx2Mask(const char* block) {
    const __m256i feed = _mm256_set1_epi8('\n');
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + 32));
    const auto lowBits =
        static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, feed)));
    const auto highBits =
        static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, feed)));
    return lowBits | std::uint64_t{highBits} << 32U;
}
#endif

BlockMask bestMask() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") ? avx2Mask : sse2Mask;
#else
    return plainMask;
#endif
}

}  // namespace

void appendLineFeeds(std::string_view text, std::uint32_t base, std::vector<std::uint32_t>& feeds) {
    static const BlockMask mask = bestMask();
    std::size_t count = feeds.size();
    for (std::size_t at = 0; at < text.size(); at += kBlock) {
        std::uint64_t bits = mask(text.data() + at);
        if (text.size() - at < kBlock) bits &= (std::uint64_t{1} << (text.size() - at)) - 1;
        if (feeds.size() < count + kBlock) feeds.resize(2 * (count + kBlock));
        std::uint32_t* out = feeds.data() + count;
        for (; bits != 0; bits &= bits - 1)
            *out++ = base + static_cast<std::uint32_t>(at) +
                     static_cast<std::uint32_t>(std::countr_zero(bits));
        count = static_cast<std::size_t>(out - feeds.data());
    }
    feeds.resize(count);
}

}  // namespace mor::host
