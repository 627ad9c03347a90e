#include "host/dwg/bits.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace mor::host {

namespace {

constexpr std::uint64_t kBitsPerByte = 8;
constexpr unsigned kMostModularBytes = 9;
constexpr unsigned kMostModularWords = 4;

std::uint64_t swapped(std::uint64_t number) { return __builtin_bswap64(number); }

}  // namespace

std::uint64_t HandleReference::from(std::uint64_t object) const {
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

// ---- bits ---------------------------------------------------------------------------------------

BitReader::BitReader(std::string_view bytes, std::uint64_t begin, std::uint64_t end)
    : m_bytes(bytes), m_at(begin), m_end(end) {
    if (end > bytes.size() * kBitsPerByte || begin > end) {
        m_at = m_end = 0;
        m_failed = true;
    }
}

void BitReader::fail() {
    m_failed = true;
    m_at = m_end;
}

void BitReader::skip(std::uint64_t bits) { bits > remaining() ? fail() : void(m_at += bits); }

bool BitReader::holds(std::uint64_t count, std::uint64_t bitsEach) {
    if (count > remaining() / bitsEach) fail();
    return !m_failed;
}

std::uint64_t BitReader::take(unsigned bits) {
    if (bits > remaining()) {
        fail();
        return 0;
    }
    const auto byte = static_cast<std::size_t>(m_at / kBitsPerByte);
    std::uint64_t window = 0;
    std::memcpy(&window, m_bytes.data() + byte, std::min(sizeof window, m_bytes.size() - byte));
    if constexpr (std::endian::native == std::endian::little) window = swapped(window);
    window <<= m_at % kBitsPerByte;
    m_at += bits;
    return window >> (64U - bits);
}

std::uint16_t BitReader::word() { return __builtin_bswap16(static_cast<std::uint16_t>(take(16))); }

std::uint32_t BitReader::longWord() {
    return __builtin_bswap32(static_cast<std::uint32_t>(take(32)));
}

double BitReader::real() {
    if (remaining() < 64) fail();
    const std::uint64_t low = longWord();
    return std::bit_cast<double>(low | std::uint64_t{longWord()} << 32U);
}

std::string BitReader::bytes(std::uint64_t count) {
    std::string taken;
    if (!holds(count, kBitsPerByte)) return taken;
    const auto byte = static_cast<std::size_t>(m_at / kBitsPerByte);
    if (m_at % kBitsPerByte == 0) {
        taken = m_bytes.substr(byte, static_cast<std::size_t>(count));
        m_at += count * kBitsPerByte;
        return taken;
    }
    taken.reserve(static_cast<std::size_t>(count));
    for (; count > 0; --count) taken += static_cast<char>(this->byte());
    return taken;
}

std::int16_t BitReader::bitShort() {
    switch (twoBits()) {
        case 0:
            return static_cast<std::int16_t>(word());
        case 1:
            return byte();
        case 2:
            return 0;
        default:
            return m_failed ? 0 : 256;
    }
}

std::int32_t BitReader::bitLong() {
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

std::uint64_t BitReader::bitLongLong() {
    std::uint64_t value = 0;
    const auto count = static_cast<unsigned>(take(3));
    for (unsigned i = 0; i < count; ++i) value |= std::uint64_t{byte()} << (8U * i);
    return value;
}

double BitReader::bitReal() {
    switch (twoBits()) {
        case 0:
            return real();
        case 1:
            return 1.0;
        case 2:
            return 0.0;
        default:
            fail();
            return 0.0;
    }
}

double BitReader::differingReal(double usual) {
    const unsigned kind = twoBits();
    if (m_failed) return 0.0;
    if (kind == 0) return usual;
    if (kind == 3) return real();
    auto bits = std::bit_cast<std::uint64_t>(usual);
    if (kind == 2) {
        const std::uint64_t middle = word();
        bits = (bits & ~(std::uint64_t{0xFFFF} << 32U)) | middle << 32U;
    }
    bits = (bits & ~std::uint64_t{0xFFFFFFFF}) | longWord();
    return std::bit_cast<double>(bits);
}

std::uint16_t BitReader::objectType() {
    switch (twoBits()) {
        case 0:
            return byte();
        case 1:
            return static_cast<std::uint16_t>(byte() + 0x1F0);
        default:
            return word();
    }
}

HandleReference BitReader::handle() {
    const std::uint8_t head = byte();
    HandleReference handle;
    handle.code = head >> 4U;
    const unsigned count = head & 0xFU;
    if (count > 8) fail();
    for (unsigned i = 0; i < count && !m_failed; ++i) handle.value = handle.value << 8U | byte();
    if (m_failed) return {};
    return handle;
}

// ---- bytes --------------------------------------------------------------------------------------

void ByteReader::fail() {
    m_failed = true;
    m_at = m_bytes.size();
}

std::string_view ByteReader::bytes(std::size_t count) {
    if (count > remaining()) {
        fail();
        return {};
    }
    m_at += count;
    return m_bytes.substr(m_at - count, count);
}

std::uint64_t ByteReader::number(std::size_t count) {
    std::uint64_t value = 0;
    const std::string_view taken = bytes(count);
    for (std::size_t i = taken.size(); i > 0; --i)
        value = value << 8U | static_cast<unsigned char>(taken[i - 1]);
    return value;
}

std::uint8_t ByteReader::byte() { return static_cast<std::uint8_t>(number(1)); }
std::uint16_t ByteReader::word() { return static_cast<std::uint16_t>(number(2)); }
std::uint16_t ByteReader::wordHighFirst() { return __builtin_bswap16(word()); }
std::uint32_t ByteReader::longWord() { return static_cast<std::uint32_t>(number(4)); }
double ByteReader::real() { return std::bit_cast<double>(number(8)); }

std::int64_t ByteReader::modularChar() {
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

std::uint64_t ByteReader::unsignedModularChar() {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < kMostModularBytes; ++i) {
        const std::uint8_t next = byte();
        value |= std::uint64_t{next & 0x7FU} << (7U * i);
        if ((next & 0x80U) == 0) return value;
    }
    fail();
    return 0;
}

std::uint64_t ByteReader::modularShort() {
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
