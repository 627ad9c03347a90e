#include "host/dwg/wide_sums.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mor::host {

namespace {

using AddBlocks = void (*)(RunningSums& sums, const char* bytes, std::size_t blocks, bool swapped);

/// What each byte adds to the second sum is known by its place.
[[maybe_unused]] void addPlainly(RunningSums& sums, const char* bytes, std::size_t blocks,
                                 bool swapped) {
    for (; blocks > 0; --blocks, bytes += kSumBlock) {
        std::uint32_t sum = 0;
        std::uint32_t weighted = 0;
        for (std::uint32_t i = 0; i < kSumBlock; ++i) {
            const std::uint32_t byte = static_cast<unsigned char>(bytes[swapped ? i ^ 6U : i]);
            sum += byte;
            weighted += (static_cast<std::uint32_t>(kSumBlock) - i) * byte;
        }
        sums.second += static_cast<std::uint32_t>(kSumBlock) * sums.first + weighted;
        sums.first += sum;
    }
}

#if defined(__x86_64__)

#define MOR_AVX2 __attribute__((target("avx2")))
#define MOR_CLMUL __attribute__((target("sse4.1,pclmul")))
#define MOR_WIDE_CLMUL __attribute__((target("avx512f,avx512vl,pclmul,vpclmulqdq")))

MOR_AVX2 inline std::uint32_t total(__m256i lanes) {
    const __m128i four =
        _mm_add_epi32(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1));
    const __m128i two = _mm_add_epi32(four, _mm_shuffle_epi32(four, 0x4E));
    return static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm_add_epi32(two, _mm_shuffle_epi32(two, 0xB1))));
}

MOR_AVX2 void addWithAvx2(RunningSums& sums, const char* bytes, std::size_t blocks, bool swapped) {
    const __m256i order =
        swapped ? _mm256_setr_epi8(6, 7, 4, 5, 2, 3, 0, 1, 14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5,
                                   2, 3, 0, 1, 14, 15, 12, 13, 10, 11, 8, 9)
                : _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3,
                                   4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m256i low =
        _mm256_setr_epi8(64, 63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48, 47, 46,
                         45, 44, 43, 42, 41, 40, 39, 38, 37, 36, 35, 34, 33);
    const __m256i high = _mm256_sub_epi8(low, _mm256_set1_epi8(32));
    const __m256i ones = _mm256_set1_epi16(1);
    const __m256i zero = _mm256_setzero_si256();
    __m256i sum = zero;
    __m256i before = zero;  // of all blocks before each one
    __m256i weighted = zero;
    const auto count = static_cast<std::uint32_t>(blocks);
    for (; blocks > 0; --blocks, bytes += kSumBlock) {
        const auto* const at = reinterpret_cast<const __m256i*>(bytes);
        const __m256i a = _mm256_shuffle_epi8(_mm256_loadu_si256(at), order);
        const __m256i b = _mm256_shuffle_epi8(_mm256_loadu_si256(at + 1), order);
        before = _mm256_add_epi32(before, sum);
        sum = _mm256_add_epi32(
            sum, _mm256_add_epi32(_mm256_sad_epu8(a, zero), _mm256_sad_epu8(b, zero)));
        weighted =
            _mm256_add_epi32(weighted, _mm256_madd_epi16(_mm256_maddubs_epi16(a, low), ones));
        weighted =
            _mm256_add_epi32(weighted, _mm256_madd_epi16(_mm256_maddubs_epi16(b, high), ones));
    }
    constexpr auto kBlock = static_cast<std::uint32_t>(kSumBlock);
    sums.second += kBlock * (count * sums.first + total(before)) + total(weighted);
    sums.first += total(sum);
}

AddBlocks bestAdd() { return __builtin_cpu_supports("avx2") ? addWithAvx2 : addPlainly; }

/// The remainder of x^power by the polynomial of the sum, its highest power in the highest bit.
constexpr std::uint64_t remainder(unsigned power) {
    std::uint32_t value = 1;  // the lowest power in the lowest bit
    for (; power > 0; --power) {
        value <<= 1U;
        if ((value & 0x10000U) != 0) value ^= 0x18005U;
    }
    std::uint64_t turned = 0;
    for (unsigned bit = 0; bit < 16; ++bit)
        turned |= std::uint64_t{value >> bit & 1U} << (63U - bit);
    return turned;
}

/// What carries 16 bytes over `bytes` of others. A product of two such numbers has one place more.
template <unsigned bytes>
constexpr auto kHigh = static_cast<long long>(remainder(8 * bytes + 63));
template <unsigned bytes>
constexpr auto kLow = static_cast<long long>(remainder(8 * bytes - 1));
template <unsigned bytes>
MOR_CLMUL inline __m128i carrier() {
    return _mm_set_epi64x(kLow<bytes>, kHigh<bytes>);
}

MOR_CLMUL inline __m128i carried(__m128i value, __m128i by, __m128i onto) {
    return _mm_xor_si128(onto, _mm_xor_si128(_mm_clmulepi64_si128(value, by, 0x00),
                                             _mm_clmulepi64_si128(value, by, 0x11)));
}

MOR_CLMUL inline __m128i loaded(const char* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

/// Sixty-four bytes at a time in four lanes, which are joined in the end.
MOR_CLMUL inline __m128i foldLanes(__m128i first, const char*& at, std::size_t rounds) {
    constexpr std::size_t kLanes = 4;
    __m128i lanes[kLanes] = {first, loaded(at + kFoldBytes), loaded(at + 2 * kFoldBytes),
                             loaded(at + 3 * kFoldBytes)};
    const __m128i far = carrier<kLanes * kFoldBytes>();
    for (at += kLanes * kFoldBytes; rounds > 1; --rounds, at += kLanes * kFoldBytes)
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            lanes[lane] = carried(lanes[lane], far, loaded(at + lane * kFoldBytes));
    const __m128i near = carrier<kFoldBytes>();
    for (std::size_t lane = 1; lane < kLanes; ++lane)
        lanes[lane] = carried(lanes[lane - 1], near, lanes[lane]);
    return lanes[kLanes - 1];
}

/// The same for as many bytes as the widest processors take at once: four lanes in each of four.
inline constexpr std::size_t kWidest = 16 * kFoldBytes;

template <unsigned bytes>
MOR_WIDE_CLMUL inline __m512i wideCarrier() {
    return _mm512_set4_epi64(kLow<bytes>, kHigh<bytes>, kLow<bytes>, kHigh<bytes>);
}

MOR_WIDE_CLMUL inline __m512i carried(__m512i value, __m512i by, __m512i onto) {
    constexpr int kExclusiveOr = 0x96;
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(value, by, 0x00),
                                     _mm512_clmulepi64_epi128(value, by, 0x11), onto, kExclusiveOr);
}

MOR_WIDE_CLMUL __m128i foldWidest(std::uint16_t seed, const char*& at, std::size_t rounds) {
    constexpr std::size_t kFour = 4 * kFoldBytes;
    __m512i lanes[4] = {_mm512_loadu_si512(at), _mm512_loadu_si512(at + kFour),
                        _mm512_loadu_si512(at + 2 * kFour), _mm512_loadu_si512(at + 3 * kFour)};
    lanes[0] = _mm512_xor_si512(lanes[0], _mm512_zextsi128_si512(_mm_cvtsi32_si128(seed)));
    const __m512i far = wideCarrier<kWidest>();
    for (at += kWidest; rounds > 1; --rounds, at += kWidest)
        for (std::size_t lane = 0; lane < 4; ++lane)
            lanes[lane] = carried(lanes[lane], far, _mm512_loadu_si512(at + lane * kFour));
    const __m512i four = wideCarrier<kFour>();
    for (std::size_t lane = 1; lane < 4; ++lane)
        lanes[lane] = carried(lanes[lane - 1], four, lanes[lane]);
    const __m128i near = carrier<kFoldBytes>();
    alignas(kFour) char joined[kFour];
    _mm512_store_si512(joined, lanes[3]);
    __m128i sum = loaded(joined);
    for (std::size_t lane = 1; lane < 4; ++lane)
        sum = carried(sum, near, loaded(joined + lane * kFoldBytes));
    return sum;
}

bool canFoldWidest() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("vpclmulqdq");
}

/// Orders that move bytes to the back or to the front: read from `rest` and from 16 + `rest` on.
alignas(16) constexpr unsigned char kMoves[48] = {
    128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128,
    0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  12,  13,  14,  15,
    128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128};

MOR_CLMUL void foldWithClmul(std::uint16_t seed, std::string_view bytes, char* folded) {
    constexpr std::size_t kLanesBytes = 4 * kFoldBytes;
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    static const bool widest = canFoldWidest();
    __m128i sum = _mm_xor_si128(loaded(at), _mm_cvtsi32_si128(seed));
    if (widest && bytes.size() >= 2 * kWidest)
        sum = foldWidest(seed, at, bytes.size() / kWidest);
    else if (bytes.size() >= kLanesBytes)
        sum = foldLanes(sum, at, bytes.size() / kLanesBytes);
    else
        at += kFoldBytes;
    const __m128i near = carrier<kFoldBytes>();
    for (; static_cast<std::size_t>(end - at) >= kFoldBytes; at += kFoldBytes)
        sum = carried(sum, near, loaded(at));
    // The rest goes behind, and what has no place before it any more is carried over all.
    const auto* const moves = reinterpret_cast<const char*>(kMoves) + (end - at);
    const __m128i back = loaded(moves);
    const __m128i front = _mm_shuffle_epi8(sum, loaded(moves + kFoldBytes));
    const __m128i behind = _mm_blendv_epi8(loaded(end - kFoldBytes), front, back);
    sum = carried(_mm_shuffle_epi8(sum, back), near, behind);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(folded), sum);
}

bool canFold() { return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1"); }

#endif

}  // namespace

#if defined(__x86_64__)
bool foldCrc16(std::uint16_t seed, std::string_view bytes, char* folded) {
    static const bool can = canFold();
    if (!can || bytes.size() < kFoldBytes) return false;
    foldWithClmul(seed, bytes, folded);
    return true;
}

void addBlocks(RunningSums& sums, const char* bytes, std::size_t blocks, bool swapped) {
    static const AddBlocks add = bestAdd();
    add(sums, bytes, blocks, swapped);
}
#else
bool foldCrc16(std::uint16_t /*seed*/, std::string_view /*bytes*/, char* /*folded*/) {
    return false;
}

void addBlocks(RunningSums& sums, const char* bytes, std::size_t blocks, bool swapped) {
    addPlainly(sums, bytes, blocks, swapped);
}
#endif

}  // namespace mor::host
