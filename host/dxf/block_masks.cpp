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

using Look = void (*)(const char* text, std::size_t blocks, BlockMasks& masks);

#if defined(__x86_64__)
void lookWithSse2(const char* text, std::size_t blocks, BlockMasks& masks) {
    for (std::size_t b = 0; b < blocks; ++b, text += kBlock) {
        for (Masks* all :
             {&masks.feed, &masks.blank, &masks.digit, &masks.zero, &masks.seven, &masks.carriage})
            (*all)[b] = 0;
        for (unsigned i = 0; i < 4; ++i) {
            const __m128i bytes =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + 16 * std::size_t{i}));
            const auto note = [i, b](Masks& mask, __m128i equal) {
                mask[b] |= std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(equal))}
                           << (16 * i);
            };
            const auto is = [bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
            const __m128i distance = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
            note(masks.feed, is('\n'));
            note(masks.blank, is(' '));
            note(masks.digit, _mm_cmpeq_epi8(_mm_min_epu8(distance, _mm_set1_epi8(9)), distance));
            note(masks.zero, is('0'));
            note(masks.seven, is('7'));
            note(masks.carriage, is('\r'));
        }
        masks.odd[b] = parities(masks.feed[b]);
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

MOR_AVX2 void lookWithAvx2(const char* text, std::size_t blocks, BlockMasks& masks) {
    for (std::size_t b = 0; b < blocks; ++b, text += kBlock) {
        const auto* const at = reinterpret_cast<const __m256i*>(text);
        const Halves block{_mm256_loadu_si256(at), _mm256_loadu_si256(at + 1)};
        masks.feed[b] = equal(block, '\n');
        masks.blank[b] = equal(block, ' ');
        masks.digit[b] = join(digits(block.low), digits(block.high));
        masks.zero[b] = equal(block, '0');
        masks.seven[b] = equal(block, '7');
        masks.carriage[b] = equal(block, '\r');
        // Multiplied without carries by all ones, each bit is the sum of those up to it.
        const __m128i feeds = _mm_set_epi64x(0, static_cast<long long>(masks.feed[b]));
        masks.odd[b] = static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_clmulepi64_si128(feeds, _mm_set1_epi8(-1), 0)));
    }
}

#define MOR_AVX512 __attribute__((target("avx512bw,pclmul")))

MOR_AVX512 void lookWithAvx512(const char* text, std::size_t blocks, BlockMasks& masks) {
    for (std::size_t b = 0; b < blocks; ++b, text += kBlock) {
        const __m512i bytes = _mm512_loadu_si512(text);
        const __m512i distance = _mm512_sub_epi8(bytes, _mm512_set1_epi8('0'));
        masks.feed[b] = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\n'));
        masks.blank[b] = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(' '));
        masks.digit[b] = _mm512_cmple_epu8_mask(distance, _mm512_set1_epi8(9));
        masks.zero[b] = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('0'));
        masks.seven[b] = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('7'));
        masks.carriage[b] = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\r'));
        const __m128i feeds = _mm_set_epi64x(0, static_cast<long long>(masks.feed[b]));
        masks.odd[b] = static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_clmulepi64_si128(feeds, _mm_set1_epi8(-1), 0)));
    }
}

Look bestLook() {
    if (!__builtin_cpu_supports("pclmul")) return lookWithSse2;
    if (__builtin_cpu_supports("avx512bw")) return lookWithAvx512;
    return __builtin_cpu_supports("avx2") ? lookWithAvx2 : lookWithSse2;
}
#else
void lookPlainly(const char* text, std::size_t blocks, BlockMasks& masks) {
    for (std::size_t b = 0; b < blocks; ++b, text += kBlock) {
        const auto all = [text](auto is) {
            std::uint64_t mask = 0;
            for (unsigned i = 0; i < kBlock; ++i) mask |= std::uint64_t{is(text[i])} << i;
            return mask;
        };
        masks.feed[b] = all([](char c) { return c == '\n'; });
        masks.blank[b] = all([](char c) { return c == ' '; });
        masks.digit[b] = all([](char c) { return c >= '0' && c <= '9'; });
        masks.zero[b] = all([](char c) { return c == '0'; });
        masks.seven[b] = all([](char c) { return c == '7'; });
        masks.carriage[b] = all([](char c) { return c == '\r'; });
        masks.odd[b] = parities(masks.feed[b]);
    }
}

Look bestLook() { return lookPlainly; }
#endif

}  // namespace

void maskBlocks(const char* text, std::size_t blocks, BlockMasks& masks) {
    static const Look look = bestLook();
    look(text, blocks, masks);
}

}  // namespace mor::host
