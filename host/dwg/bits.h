#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace mor::host {

/// A handle as a stream of bits has it.
struct HandleReference {
    std::uint8_t code = 0;  ///< how it refers: 2 to 5 by itself, 6, 8, 10 and 12 relatively
    std::uint64_t value = 0;

    /// The handle that is meant, when the object `from` holds the reference. 0 is none.
    [[nodiscard]] std::uint64_t from(std::uint64_t object) const;
};

/// Takes values out of a stretch of bits, the most significant bit of each byte first. Behind the
/// end, and for codes that mean nothing, every value is 0 and `failed` says so from then on. The
/// bytes outlive the reader.
class BitReader {
public:
    BitReader() = default;
    /// Positions count in bits from the first byte. Fails at once where they lie outside.
    BitReader(std::string_view bytes, std::uint64_t begin, std::uint64_t end);

    [[nodiscard]] std::uint64_t position() const { return m_at; }
    [[nodiscard]] std::uint64_t remaining() const { return m_end - m_at; }
    [[nodiscard]] bool failed() const { return m_failed; }
    void fail();
    void skip(std::uint64_t bits) { bits > remaining() ? fail() : void(m_at += bits); }
    /// Whether that many elements of at least so many bits can follow; fails when they cannot.
    bool holds(std::uint64_t count, std::uint64_t bitsEach = 1);

    bool bit() { return take(1) != 0; }
    unsigned twoBits() { return static_cast<unsigned>(take(2)); }
    std::uint8_t byte() { return static_cast<std::uint8_t>(take(8)); }
    std::uint16_t word() { return __builtin_bswap16(static_cast<std::uint16_t>(take(16))); }
    std::uint32_t longWord() { return __builtin_bswap32(static_cast<std::uint32_t>(take(32))); }
    double real();
    std::string bytes(std::uint64_t count);

    // Numbers that are short where they can be.
    std::int16_t bitShort();
    std::int32_t bitLong();
    std::uint64_t bitLongLong();
    double bitReal();
    /// Says only in which bytes it differs from `usual`.
    double differingReal(double usual);
    std::uint16_t objectType();  ///< from R2010 on; before it is a bitShort
    HandleReference handle();

private:
    std::uint64_t take(unsigned bits);  ///< 1 to 57

    std::string_view m_bytes;
    std::uint64_t m_at = 0;
    std::uint64_t m_end = 0;
    bool m_failed = false;
};

/// Takes whole bytes, numbers with the lowest byte first unless said; fails like a BitReader.
class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::size_t position() const { return m_at; }
    [[nodiscard]] std::size_t remaining() const { return m_bytes.size() - m_at; }
    [[nodiscard]] bool failed() const { return m_failed; }
    void fail();
    std::string_view bytes(std::size_t count);
    std::uint8_t byte() {
        if (m_at < m_bytes.size()) return static_cast<std::uint8_t>(m_bytes[m_at++]);
        fail();
        return 0;
    }
    std::uint16_t word();
    std::uint16_t wordHighFirst() { return __builtin_bswap16(word()); }
    std::uint32_t longWord();
    std::uint64_t number(std::size_t count);  ///< at most 8 bytes
    double real();
    std::int64_t modularChar();           ///< seven bits a byte, with a sign
    std::uint64_t unsignedModularChar();  ///< without one
    std::uint64_t modularShort();         ///< fifteen bits a word

private:
    static constexpr unsigned kMostModularBytes = 9;
    static constexpr unsigned kMostModularWords = 4;

    std::string_view m_bytes;
    std::size_t m_at = 0;
    bool m_failed = false;
};

// What objects are made of is taken a few bits at a time: it stays in registers.

inline std::uint64_t BitReader::take(unsigned bits) {
    if (bits > remaining()) {
        fail();
        return 0;
    }
    // The last eight bytes serve for all bits that lie in them.
    std::uint64_t window = 0;
    const auto byte = static_cast<std::size_t>(m_at / 8);
    std::size_t first = byte;
    if (m_bytes.size() >= sizeof window) {
        first = std::min(byte, m_bytes.size() - sizeof window);
        std::memcpy(&window, m_bytes.data() + first, sizeof window);
    } else {
        std::memcpy(&window, m_bytes.data() + byte, m_bytes.size() - byte);
    }
    if constexpr (std::endian::native == std::endian::little) window = __builtin_bswap64(window);
    window <<= m_at - first * std::uint64_t{8};
    m_at += bits;
    return window >> (64U - bits);
}

inline std::uint64_t HandleReference::from(std::uint64_t object) const {
    switch (code) {
        case 6:
            return object + 1;
        case 8:
            return object - 1;
        case 0xA:
            return object + value;
        case 0xC:
            return object - value;
        default:
            return value;
    }
}

inline std::int16_t BitReader::bitShort() {
    switch (twoBits()) {
        case 0:
            return static_cast<std::int16_t>(word());
        case 1:
            return byte();
        case 2:
            return 0;
        default:
            return 256;
    }
}

inline std::int32_t BitReader::bitLong() {
    switch (twoBits()) {
        case 0:
            return static_cast<std::int32_t>(longWord());
        case 1:
            return byte();
        case 2:
            return 0;
        default:
            fail();
            return 0;
    }
}

inline HandleReference BitReader::handle() {
    const std::uint8_t head = byte();
    const unsigned count = head & 0xFU;
    HandleReference handle{static_cast<std::uint8_t>(head >> 4U), 0};
    if (count > 8) fail();
    if (count == 0 || m_failed) return m_failed ? HandleReference() : handle;
    const unsigned high = count - std::min(count, 4U);
    if (high != 0) handle.value = take(8 * high) << 32U;
    handle.value |= take(8 * (count - high));
    return m_failed ? HandleReference() : handle;
}

inline std::uint16_t ByteReader::word() {
    if (remaining() < 2) {
        fail();
        return 0;
    }
    const unsigned low = byte();
    return static_cast<std::uint16_t>(low | unsigned{byte()} << 8U);
}

inline std::int64_t ByteReader::modularChar() {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < kMostModularBytes; ++i) {
        const std::uint8_t next = byte();
        if ((next & 0x80U) == 0) {
            value |= std::uint64_t{next & 0x3FU} << (7U * i);
            const auto number = static_cast<std::int64_t>(value);
            return (next & 0x40U) != 0 ? -number : number;
        }
        value |= std::uint64_t{next & 0x7FU} << (7U * i);
    }
    fail();
    return 0;
}

inline std::uint64_t ByteReader::unsignedModularChar() {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < kMostModularBytes; ++i) {
        const std::uint8_t next = byte();
        value |= std::uint64_t{next & 0x7FU} << (7U * i);
        if ((next & 0x80U) == 0) return value;
    }
    fail();
    return 0;
}

inline std::uint64_t ByteReader::modularShort() {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < kMostModularWords; ++i) {
        const std::uint16_t next = word();
        value |= std::uint64_t{next & 0x7FFFU} << (15U * i);
        if ((next & 0x8000U) == 0) return value;
    }
    fail();
    return 0;
}

}  // namespace mor::host
