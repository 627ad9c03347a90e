#include "host/dxf/block_masks.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mor::host {

namespace {

/// For each bit, whether the number of bits up to it and with it is odd.
[[maybe_unused]] std::uint64_t parities(std::uint64_t bits) {
    for (unsigned step = 1; step < kBlock; step *= 2) bits ^= bits << step;
    return bits;
}

using Look = void (*)(const char* text, std::size_t blocks, BlockMasks* masks);

#if defined(__x86_64__)
void lookWithSse2(const char* text, std::size_t blocks, BlockMasks* masks) {
    for (; blocks > 0; --blocks, text += kBlock, ++masks) {
        BlockMasks found;
        for (unsigned i = 0; i < 4; ++i) {
            const __m128i bytes =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + 16 * std::size_t{i}));
            const auto note = [i](std::uint64_t& mask, __m128i equal) {
                mask |= std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(equal))} << (16 * i);
            };
            const auto is = [bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
            const __m128i distance = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
            note(found.feed, is('\n'));
            note(found.blank, is(' '));
            note(found.digit, _mm_cmpeq_epi8(_mm_min_epu8(distance, _mm_set1_epi8(9)), distance));
            note(found.zero, is('0'));
            note(found.seven, is('7'));
            note(found.carriage, is('\r'));
        }
        found.odd = parities(found.feed);
        *masks = found;
    }
}

#define MOR_AVX2 __attribute__((target("avx2,pclmul")))

/// Two halves of a block.
struct Halves {
    __m256i low;
    __m256i high;
};

MOR_AVX2 inline std::uint64_t join(__m256i low, __m256i high) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(low)) |
           std::uint64_t{static_cast<std::uint32_t>(_mm256_movemask_epi8(high))} << 32U;
}

MOR_AVX2 inline std::uint64_t equal(const Halves& block, char c) {
    const __m256i wanted = _mm256_set1_epi8(c);
    return join(_mm256_cmpeq_epi8(block.low, wanted), _mm256_cmpeq_epi8(block.high, wanted));
}

MOR_AVX2 inline __m256i digits(__m256i bytes) {
    const __m256i distance = _mm256_sub_epi8(bytes, _mm256_set1_epi8('0'));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, _mm256_set1_epi8(9)), distance);
}

MOR_AVX2 void lookWithAvx2(const char* text, std::size_t blocks, BlockMasks* masks) {
    for (; blocks > 0; --blocks, text += kBlock, ++masks) {
        const auto* const at = reinterpret_cast<const __m256i*>(text);
        const Halves block{_mm256_loadu_si256(at), _mm256_loadu_si256(at + 1)};
        masks->feed = equal(block, '\n');
        masks->blank = equal(block, ' ');
        masks->digit = join(digits(block.low), digits(block.high));
        masks->zero = equal(block, '0');
        masks->seven = equal(block, '7');
        masks->carriage = equal(block, '\r');
        // Multiplied without carries by all ones, each bit is the sum of those up to it.
        const __m128i feeds = _mm_set_epi64x(0, static_cast<long long>(masks->feed));
        masks->odd = static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_clmulepi64_si128(feeds, _mm_set1_epi8(-1), 0)));
    }
}

#define MOR_AVX512 __attribute__((target("avx512bw,pclmul")))

MOR_AVX512 void lookWithAvx512(const char* text, std::size_t blocks, BlockMasks* masks) {
    for (; blocks > 0; --blocks, text += kBlock, ++masks) {
        const __m512i bytes = _mm512_loadu_si512(text);
        const __m512i distance = _mm512_sub_epi8(bytes, _mm512_set1_epi8('0'));
        masks->feed = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\n'));
        masks->blank = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(' '));
        masks->digit = _mm512_cmple_epu8_mask(distance, _mm512_set1_epi8(9));
        masks->zero = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('0'));
        masks->seven = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('7'));
        masks->carriage = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\r'));
        const __m128i feeds = _mm_set_epi64x(0, static_cast<long long>(masks->feed));
        masks->odd = static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_clmulepi64_si128(feeds, _mm_set1_epi8(-1), 0)));
    }
}

Look bestLook() {
    if (!__builtin_cpu_supports("pclmul")) return lookWithSse2;
    if (__builtin_cpu_supports("avx512bw")) return lookWithAvx512;
    return __builtin_cpu_supports("avx2") ? lookWithAvx2 : lookWithSse2;
}
#else
void lookPlainly(const char* text, std::size_t blocks, BlockMasks* masks) {
    for (; blocks > 0; --blocks, text += kBlock, ++masks) {
        BlockMasks found;
        for (unsigned i = 0; i < kBlock; ++i) {
            const char c = text[i];
            found.feed |= std::uint64_t{c == '\n'} << i;
            found.blank |= std::uint64_t{c == ' '} << i;
            found.digit |= std::uint64_t{c >= '0' && c <= '9'} << i;
            found.zero |= std::uint64_t{c == '0'} << i;
            found.seven |= std::uint64_t{c == '7'} << i;
            found.carriage |= std::uint64_t{c == '\r'} << i;
        }
        found.odd = parities(found.feed);
        *masks = found;
    }
}

Look bestLook() { return lookPlainly; }
#endif

}  // namespace

void maskBlocks(const char* text, std::size_t blocks, BlockMasks* masks) {
    static const Look look = bestLook();
    look(text, blocks, masks);
}

}  // namespace mor::host
