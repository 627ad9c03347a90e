// What a program must do at least that indexes a text drawing: finds every record, with its type
// and its handle, in one pass over the file. Masks of 64 bytes at a time, nothing checked, nothing
// kept: `bench/large_drawing` holds the tool against it.

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kPiece = std::size_t{256} * 1024;
constexpr std::size_t kFront = std::size_t{64} * 1024;  // room for what a piece leaves behind

/// What the bytes of a block are, a bit each.
struct Masks {
    std::uint64_t feed = 0;
    std::uint64_t blank = 0;
    std::uint64_t zero = 0;
    std::uint64_t five = 0;
};

#if defined(__x86_64__)
struct Sse2 {
    static Masks look(const char* text) {
        Masks masks;
        for (unsigned i = 0; i < 4; ++i) {
            const __m128i bytes =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + 16 * std::size_t{i}));
            const auto equal = [&](char c) {
                const int bits = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)));
                return std::uint64_t{static_cast<unsigned>(bits)} << (16 * i);
            };
            masks.feed |= equal('\n');
            masks.blank |= equal(' ');
            masks.zero |= equal('0');
            masks.five |= equal('5');
        }
        return masks;
    }
};

struct Avx2 {
    __attribute__((target("avx2"), always_inline)) static inline std::uint64_t equal(__m256i low,
                                                                                     __m256i high,
                                                                                     char c) {
        const __m256i wanted = _mm256_set1_epi8(c);
        const auto lowBits =
            static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, wanted)));
        const auto highBits =
            static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, wanted)));
        return lowBits | std::uint64_t{highBits} << 32U;
    }
    __attribute__((target("avx2"), always_inline)) static inline Masks look(const char* text) {
        const auto* const block = reinterpret_cast<const __m256i*>(text);
        const __m256i low = _mm256_loadu_si256(block);
        const __m256i high = _mm256_loadu_si256(block + 1);
        return {equal(low, high, '\n'), equal(low, high, ' '), equal(low, high, '0'),
                equal(low, high, '5')};
    }
};
#else
struct Plain {
    static Masks look(const char* text) {
        Masks masks;
        for (unsigned i = 0; i < kBlock; ++i) {
            masks.feed |= std::uint64_t{text[i] == '\n'} << i;
            masks.blank |= std::uint64_t{text[i] == ' '} << i;
            masks.zero |= std::uint64_t{text[i] == '0'} << i;
            masks.five |= std::uint64_t{text[i] == '5'} << i;
        }
        return masks;
    }
};
#endif

/// What was found, added up, so that nothing of it can be left out.
struct Found {
    std::uint64_t records = 0;
    std::uint64_t types = 0;
    std::uint64_t handles = 0;
    bool handled = true;  // of the record that is open
};

inline std::uint64_t valueOfHandle(const char* text) {
    std::uint64_t handle = 0;
    for (;; ++text) {
        const auto c = static_cast<unsigned char>(*text);
        const unsigned digit = c - unsigned{'0'};
        const unsigned letter = (c | 0x20U) - unsigned{'a'};
        if (digit < 10)
            handle = handle << 4U | digit;
        else if (letter < 6)
            handle = handle << 4U | (letter + 10);
        else if (c != ' ')
            return handle;
    }
}

inline std::uint64_t headOf(const char* text) {
    std::uint64_t head = 0;
    std::memcpy(&head, text, sizeof head);
    return head;
}

inline void take(const char* feed, Found& found) {
    if (feed[-1] == '0') {
        ++found.records;
        found.types += headOf(feed + 1);
        found.handled = false;
    } else if (!found.handled) {
        found.handles += valueOfHandle(feed + 1);
        found.handled = true;
    }
}

inline std::uint64_t spread(std::uint64_t bits) {
    for (unsigned step = 1; step < 64; step *= 2) bits ^= bits << step;
    return bits;
}

/// The line feeds that end a line of a code: the first of a text, and every second one from there.
struct Lines {
    std::uint64_t odd = 0;     // all ones while a value is open
    std::uint64_t last = 0;    // the last byte was a 0 or a 5
    std::uint64_t before = 0;  // what the last two bytes were: line feed or blank
    std::uint64_t ends(const Masks& masks) {
        const std::uint64_t parity = spread(masks.feed) ^ odd;
        odd = std::uint64_t{} - (parity >> 63U);
        const std::uint64_t wanted = masks.zero | masks.five;
        const std::uint64_t front = masks.feed | masks.blank;
        const std::uint64_t ends =
            masks.feed & parity & (wanted << 1U | last) & (front << 2U | before);
        last = wanted >> 63U;
        before = front >> 62U;
        return ends;
    }
};

// Takes whole blocks; 64 bytes before and behind them are readable.
using Scan = void (*)(const char* text, std::size_t size, Lines& lines, Found& found);

#define MOR_BENCH_SCAN(NAME, LOOK, TARGET)                                                       \
    TARGET void NAME(const char* text, std::size_t size, Lines& lines, Found& found) {           \
        for (std::size_t at = 0; at < size; at += kBlock) {                                      \
            std::uint64_t ends = lines.ends(LOOK::look(text + at));                              \
            for (; ends != 0; ends &= ends - 1) take(text + at + std::countr_zero(ends), found); \
        }                                                                                        \
    }

#if defined(__x86_64__)
MOR_BENCH_SCAN(scanWithAvx2, Avx2, __attribute__((target("avx2,bmi,bmi2"))))
MOR_BENCH_SCAN(scanWithSse2, Sse2, )
Scan bestScan() { return __builtin_cpu_supports("avx2") ? scanWithAvx2 : scanWithSse2; }
#else
MOR_BENCH_SCAN(scanPlainly, Plain, )
Scan bestScan() { return scanPlainly; }
#endif

int scanFile(const char* name) {
    const int file = ::open(name, O_RDONLY | O_CLOEXEC);
    if (file < 0) return 1;
    std::vector<char> buffer(kFront + kPiece + kBlock, '\n');
    const Scan scan = bestScan();
    Lines lines;
    Found found;
    // A value may lie behind the piece: the last blocks are looked at once more text is there.
    std::size_t kept = 0;
    while (true) {
        char* const text = buffer.data() + kFront;
        const ssize_t got = ::read(file, text, kPiece);
        if (got < 0) return 1;
        const char* const begin = text - kept;
        const std::size_t size = kept + static_cast<std::size_t>(got);
        const std::size_t whole = got == 0 ? (size + kBlock - 1) / kBlock * kBlock
                                           : (size < 1024 ? 0 : (size - 1024) / kBlock * kBlock);
        if (got == 0) std::memset(text, ' ', kBlock);
        scan(begin, whole, lines, found);
        if (got == 0) break;
        kept = size - whole;
        // Two bytes more: the codes are read from before their line feeds.
        std::memmove(text - kept - 2, begin + whole - 2, kept + 2);
    }
    ::close(file);
    std::printf("%llu records, %llx %llx\n", static_cast<unsigned long long>(found.records),
                static_cast<unsigned long long>(found.types),
                static_cast<unsigned long long>(found.handles));
    return 0;
}

}  // namespace

int main(int count, char** words) {
    if (count == 2) return scanFile(words[1]);
    std::fputs("usage: record_scan DRAWING\n", stderr);
    return 2;
}
