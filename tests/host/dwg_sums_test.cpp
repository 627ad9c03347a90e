#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/code_words.h"
#include "tests/support/dwg_bits.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mor::test {
namespace {

TEST(DwgSums, AreTheSameHoweverManyBytesAreTakenAtOnce) {
    const auto byBytes = [](std::uint32_t seed, std::string_view bytes) {
        std::uint32_t first = seed & 0xFFFFU;
        std::uint32_t second = seed >> 16U;
        for (const char c : bytes) {
            first = (first + static_cast<unsigned char>(c)) % 65521;
            second = (second + first) % 65521;
        }
        return second << 16U | first;
    };
    std::string bytes;
    std::string swapped;  // of each eight bytes the two-byte words in reverse order
    for (std::uint32_t i = 0; i < 12000; ++i) bytes += static_cast<char>(~(i * i >> 5U));
    for (std::size_t i = 0; i < bytes.size(); ++i) swapped += bytes[i ^ 6U];
    for (std::size_t size = 0; size <= bytes.size(); size = size < 300 ? size + 1 : size + 1171) {
        const auto part = std::string_view(bytes).substr(size % 7, size);
        ASSERT_EQ(host::crc16(0xC0C1, part), dwgSum(part)) << size;
        ASSERT_EQ(host::pageSum(0xFFF0FFF0, part), byBytes(0xFFF0FFF0, part)) << size;
        const std::size_t eights = size / 8 * 8;
        const auto start = static_cast<std::uint32_t>(eights) * 0x343FDU + 0x269EC3U;
        ASSERT_EQ(host::pageSum2007(std::string_view(bytes).substr(0, eights)),
                  byBytes(start, std::string_view(swapped).substr(0, eights)))
            << eights;
    }
}

// Multiples of the generator of four bytes of parity, which stand for any data.
TEST(DwgSums, ParityTellsEveryDamagedByteOfACodeWord) {
    constexpr std::size_t words = 70;
    const std::string generator = "\x74\xE7\xD8\x1E\x01";
    std::string coded(words * host::kCodeWordBytes, '\0');
    for (std::size_t word = 0; word < words; ++word)
        for (std::size_t i = 0; i < generator.size(); ++i)
            coded[(word + i) * words + word] = generator[i];
    EXPECT_TRUE(host::parityHolds(coded, words, host::kPageData));
    EXPECT_FALSE(host::parityHolds(coded, words, host::kSystemData));
    EXPECT_FALSE(host::parityHolds(coded, words + 1, host::kPageData));
    for (std::size_t at = 3; at < coded.size(); at += 997) {
        coded[at] = static_cast<char>(coded[at] ^ 0x40);
        EXPECT_FALSE(host::parityHolds(coded, words, host::kPageData)) << at;
        coded[at] = static_cast<char>(coded[at] ^ 0x40);
    }
    EXPECT_EQ(host::deinterleaved(coded, words, host::kPageData).substr(0, 5), generator);
}

TEST(DwgSums, CodeWordsAreTakenApartHoweverManyThereAre) {
    for (std::size_t words = 1; words < 40; words += 3) {
        std::string coded;
        for (std::size_t i = 0; i < words * host::kCodeWordBytes; ++i)
            coded += static_cast<char>(i * i >> 3U);
        for (const std::size_t perWord : {host::kPageData, host::kSystemData}) {
            std::string data;
            for (std::size_t word = 0; word < words; ++word)
                for (std::size_t i = 0; i < perWord; ++i) data += coded[i * words + word];
            EXPECT_EQ(host::deinterleaved(coded, words, perWord), data) << words;
        }
    }
}

TEST(DwgBits, AreTheSameWhereverTheyLie) {
    const auto bitAt = [](std::string_view bytes, std::size_t at) {
        return static_cast<unsigned char>(bytes[at / 8]) >> (7 - at % 8) & 1U;
    };
    const std::string all = "\x8A\x31\xF4\x07\x5C\xE1\x9B\x20\x77\xC3\x12\xD8\x45";
    for (std::size_t size = 1; size <= all.size(); ++size) {
        const auto bytes = std::string_view(all).substr(0, size);
        const std::size_t end = size * 8;
        for (std::size_t at = 0; at + 2 <= end; ++at) {
            host::BitReader reader(bytes, at, end);
            EXPECT_EQ(reader.twoBits(), bitAt(bytes, at) << 1U | bitAt(bytes, at + 1));
            if (at + 32 > end) continue;
            host::BitReader words(bytes, at, end);
            std::uint32_t expected = 0;
            for (std::size_t i = 0; i < 32; ++i)
                expected |= bitAt(bytes, at + i) << (i / 8 * 8 + 7 - i % 8);
            EXPECT_EQ(words.longWord(), expected) << size << " " << at;
            if (at + 32 < end) continue;
            EXPECT_FALSE(words.bit());
            EXPECT_TRUE(words.failed());
        }
    }
    // A handle says how many bytes follow.
    for (unsigned count = 0; count <= 9; ++count) {
        std::string bytes(1, static_cast<char>(0x50 | count));
        std::uint64_t expected = 0;
        for (unsigned i = 0; i < count; ++i) {
            bytes += static_cast<char>(0xF1 - i);
            expected = expected << 8U | (0xF1U - i);
        }
        host::BitReader reader(bytes, 0, bytes.size() * 8);
        const host::HandleReference handle = reader.handle();
        EXPECT_EQ(reader.failed(), count > 8);
        EXPECT_EQ(handle.value, count > 8 ? 0 : expected) << count;
        host::BitReader cut(bytes, 0, bytes.size() * 8 - 1);
        EXPECT_EQ(cut.handle().value, 0U);
        EXPECT_TRUE(cut.failed());
    }
}

}  // namespace
}  // namespace mor::test
