#include "host/dwg/code_words.h"

#include "host/faults.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace mor::host {

namespace {

/// Code words that are looked at together.
constexpr std::size_t kTogether = 64;
/// Rows and columns that are exchanged at once.
constexpr std::size_t kBlock = 8;
/// The fields of 256 elements in which system pages and data pages are coded.
constexpr std::uint8_t kSystemField = 0x69;  // without its highest bit
constexpr std::uint8_t kDataField = 0x1D;

using Row = std::array<std::uint8_t, kTogether>;

/// Code words as they lie among others: byte `i` of the first one at `i * words`.
struct CodeWords {
    const char* first = nullptr;
    std::size_t words = 0;
    std::size_t count = 0;  ///< of those that are looked at
    std::uint8_t field = 0;
};

/// Each times the root of the field.
[[gnu::always_inline]] inline void multiply(Row& row, std::uint8_t field) {
    for (std::uint8_t& value : row) {
        const auto carried = static_cast<std::uint8_t>(-(value >> 7U));
        value = static_cast<std::uint8_t>(value + value) ^ (carried & field);
    }
}

/// Whether words are 0 at the powers 1 to `roots` of the field's root, read as polynomials whose
/// lowest coefficient is the first byte.
template <unsigned roots>
[[gnu::always_inline]] inline bool vanish(const CodeWords& all) {
    std::array<Row, roots> values{};
    Row row{};
    for (std::size_t byte = kCodeWordBytes; byte-- > 0;) {
        std::memcpy(row.data(), all.first + byte * all.words, all.count);
        for (unsigned root = 1; root <= roots; ++root) {
            Row& value = values[root - 1];
            for (unsigned i = 0; i < root; ++i) multiply(value, all.field);
            for (std::size_t i = 0; i < kTogether; ++i) value[i] ^= row[i];
        }
    }
    return std::ranges::all_of(values, [](const Row& value) { return value == Row{}; });
}

using Vanish = bool (*)(const CodeWords& all);

constexpr unsigned kDataRoots = kCodeWordBytes - kPageData;
constexpr unsigned kSystemRoots = kCodeWordBytes - kSystemData;

bool dataVanishes(const CodeWords& all) { return vanish<kDataRoots>(all); }
bool systemVanishes(const CodeWords& all) { return vanish<kSystemRoots>(all); }

#if defined(__x86_64__)
[[gnu::target("avx2")]] bool dataVanishesWithAvx2(const CodeWords& all) {
    return vanish<kDataRoots>(all);
}
[[gnu::target("avx2")]] bool systemVanishesWithAvx2(const CodeWords& all) {
    return vanish<kSystemRoots>(all);
}
bool isWide() { return __builtin_cpu_supports("avx2"); }
#else
constexpr Vanish dataVanishesWithAvx2 = dataVanishes;
constexpr Vanish systemVanishesWithAvx2 = systemVanishes;
bool isWide() { return false; }
#endif

Vanish bestFor(bool system) {
    if (isWide()) return system ? systemVanishesWithAvx2 : dataVanishesWithAvx2;
    return system ? systemVanishes : dataVanishes;
}

/// Eight bytes of each of eight rows, `stride` apart, as eight bytes of each of eight columns.
void turnBlock(const char* from, std::size_t stride, char* to, std::size_t toStride) {
    std::array<std::uint64_t, kBlock> rows{};
    for (std::size_t i = 0; i < kBlock; ++i) std::memcpy(&rows[i], from + i * stride, kBlock);
    const auto exchange = [&rows](unsigned distance, std::uint64_t mask) {
        for (unsigned i = 0; i < kBlock; ++i) {
            if ((i & distance) != 0) continue;
            const std::uint64_t moved = (rows[i] >> 8 * distance ^ rows[i + distance]) & mask;
            rows[i] ^= moved << 8 * distance;
            rows[i + distance] ^= moved;
        }
    };
    exchange(4, 0x00000000FFFFFFFF);
    exchange(2, 0x0000FFFF0000FFFF);
    exchange(1, 0x00FF00FF00FF00FF);
    for (std::size_t i = 0; i < kBlock; ++i) std::memcpy(to + i * toStride, &rows[i], kBlock);
}

}  // namespace

std::string deinterleaved(std::string_view coded, std::size_t words, std::size_t perWord) {
    std::string data;
    if (words == 0 || words > coded.size() / kCodeWordBytes) return data;
    data.resize(words * perWord);
    const bool turns = std::endian::native == std::endian::little;
    const std::size_t blockWords = turns ? words / kBlock * kBlock : 0;
    const std::size_t blockBytes = perWord / kBlock * kBlock;
    for (std::size_t word = 0; word < blockWords; word += kBlock)
        for (std::size_t i = 0; i < blockBytes; i += kBlock)
            turnBlock(coded.data() + i * words + word, words, data.data() + word * perWord + i,
                      perWord);
    for (std::size_t word = 0; word < words; ++word)
        for (std::size_t i = word < blockWords ? blockBytes : 0; i < perWord; ++i)
            data[word * perWord + i] = coded[i * words + word];
    return data;
}

bool parityHolds(std::string_view coded, std::size_t words, std::size_t perWord) {
    if (faults::trustsSums()) return true;
    if (words > coded.size() / kCodeWordBytes) return false;
    const bool system = perWord == kSystemData;
    const Vanish best = bestFor(system);
    for (std::size_t first = 0; first < words; first += kTogether) {
        const CodeWords all{coded.data() + first, words, std::min(kTogether, words - first),
                            system ? kSystemField : kDataField};
        if (!best(all)) return false;
    }
    return true;
}

}  // namespace mor::host
