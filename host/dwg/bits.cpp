#include "host/dwg/bits.h"

#include <algorithm>
#include <bit>

namespace mor::host {

namespace {

constexpr std::uint64_t kBitsPerByte = 8;

}  // namespace

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

bool BitReader::holds(std::uint64_t count, std::uint64_t bitsEach) {
    if (count > remaining() / bitsEach) fail();
    return !m_failed;
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
    taken.resize(static_cast<std::size_t>(count));
    std::size_t done = 0;
    for (; done + 4 <= taken.size(); done += 4) {
        const auto four = static_cast<std::uint32_t>(take(32));
        for (unsigned i = 0; i < 4; ++i)
            taken[done + i] = static_cast<char>(four >> (24U - 8U * i) & 0xFFU);
    }
    for (; done < taken.size(); ++done) taken[done] = static_cast<char>(this->byte());
    return taken;
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

std::uint32_t ByteReader::longWord() { return static_cast<std::uint32_t>(number(4)); }
double ByteReader::real() { return std::bit_cast<double>(number(8)); }

}  // namespace mor::host
