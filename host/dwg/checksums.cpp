#include "host/dwg/checksums.h"

#include "host/dwg/wide_sums.h"
#include "host/faults.h"

#include <algorithm>
#include <array>

namespace mor::host {

namespace {

constexpr std::size_t kStride = 8;
constexpr std::uint32_t kModulus = 65521;
/// After so many bytes the running sums have to be reduced.
constexpr std::size_t kSafeBytes = 0x15B0;

template <typename Word>
constexpr std::array<std::array<Word, 256>, kStride> crcTables(Word polynomial) {
    std::array<std::array<Word, 256>, kStride> tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        auto value = static_cast<Word>(byte);
        for (int bit = 0; bit < 8; ++bit)
            value = static_cast<Word>((value & 1U) != 0 ? (value >> 1U) ^ polynomial : value >> 1U);
        tables[0][byte] = value;
    }
    for (unsigned byte = 0; byte < 256; ++byte)
        for (std::size_t i = 1; i < kStride; ++i) {
            const Word before = tables[i - 1][byte];
            tables[i][byte] = static_cast<Word>((before >> 8U) ^ tables[0][before & 0xFFU]);
        }
    return tables;
}

constexpr auto kTables16 = crcTables<std::uint16_t>(0xA001);
constexpr auto kTables32 = crcTables<std::uint32_t>(0xEDB88320);

unsigned char at(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

void addByte(RunningSums& sums, char c) {
    sums.first += static_cast<unsigned char>(c);
    sums.second += sums.first;
}

void reduce(RunningSums& sums) {
    sums.first %= kModulus;
    sums.second %= kModulus;
}

std::uint32_t joined(const RunningSums& sums) { return sums.second << 16U | sums.first; }

/// Adds a stretch that is short enough; the rest of less than a block byte by byte.
void addStretch(RunningSums& sums, std::string_view part) {
    const std::size_t blocks = part.size() / kSumBlock;
    addBlocks(sums, part.data(), blocks, false);
    for (const char c : part.substr(blocks * kSumBlock)) addByte(sums, c);
}

/// In which order the last bytes of a stretch are taken, of a rest of 4 to 7.
constexpr std::array<std::array<std::uint8_t, 7>, 4> kRests = {
    {{2, 3, 0, 1}, {2, 3, 0, 1, 4}, {2, 3, 0, 1, 4, 5}, {2, 3, 0, 1, 4, 5, 6}}};

}  // namespace

std::uint16_t crc16(std::uint16_t seed, std::string_view bytes) {
    std::array<char, kFoldBytes> folded{};
    if (foldCrc16(seed, bytes, folded.data())) {
        seed = 0;
        bytes = {folded.data(), folded.size()};
    }
    unsigned crc = seed;
    std::size_t i = 0;
    for (; i + kStride <= bytes.size(); i += kStride) {
        const auto& t = kTables16;
        crc = t[7][(at(bytes, i) ^ crc) & 0xFFU] ^ t[6][at(bytes, i + 1) ^ (crc >> 8U)] ^
              t[5][at(bytes, i + 2)] ^ t[4][at(bytes, i + 3)] ^ t[3][at(bytes, i + 4)] ^
              t[2][at(bytes, i + 5)] ^ t[1][at(bytes, i + 6)] ^ t[0][at(bytes, i + 7)];
    }
    for (; i < bytes.size(); ++i) crc = (crc >> 8U) ^ kTables16[0][(crc ^ at(bytes, i)) & 0xFFU];
    return static_cast<std::uint16_t>(crc);
}

bool sumsAgree(std::uint32_t sum, std::uint32_t stored) {
    return sum == stored || faults::trustsSums();
}

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes)
        crc = (crc >> 8U) ^ kTables32[0][(crc ^ static_cast<unsigned char>(c)) & 0xFFU];
    return ~crc;
}

std::uint32_t pageSum(std::uint32_t seed, std::string_view bytes) {
    RunningSums sums{seed & 0xFFFFU, seed >> 16U};
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, kSafeBytes);
        addStretch(sums, part);
        reduce(sums);
        bytes.remove_prefix(part.size());
    }
    return joined(sums);
}

std::uint32_t pageSum2007(std::string_view bytes) {
    const auto start = static_cast<std::uint32_t>(bytes.size()) * 0x343FDU + 0x269EC3U;
    RunningSums sums{start & 0xFFFFU, start >> 16U};
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, kSafeBytes);
        const std::size_t blocks = part.size() / kSumBlock;
        addBlocks(sums, part.data(), blocks, true);
        std::size_t i = blocks * kSumBlock;
        for (; i + 8 <= part.size(); i += 8)
            for (std::size_t k = 0; k < 8; ++k) addByte(sums, part[i + (k ^ 6U)]);
        const std::size_t rest = part.size() - i;
        for (std::size_t k = 0; k < rest; ++k)
            addByte(sums, part[i + (rest < 4 ? k : kRests[rest - 4][k])]);
        reduce(sums);
        bytes.remove_prefix(part.size());
    }
    return joined(sums);
}

std::string byteSequence(std::size_t count) {
    std::string bytes(count, '\0');
    std::uint32_t state = 1;
    for (char& c : bytes) {
        state = state * 0x343FDU + 0x269EC3U;
        c = static_cast<char>((state >> 16U) & 0xFFU);
    }
    return bytes;
}

}  // namespace mor::host
