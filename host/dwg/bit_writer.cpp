#include "host/dwg/bit_writer.h"

#include "host/dwg/bits.h"

#include <algorithm>
#include <bit>

namespace mor::host {

void BitWriter::bits(std::uint64_t value, unsigned count) {
    while (count > 0) {
        const auto used = static_cast<unsigned>(m_bits % 8);
        if (used == 0) m_bytes += '\0';
        const unsigned now = std::min(8 - used, count);
        const auto part = static_cast<unsigned>(value >> (count - now)) & ((1U << now) - 1U);
        auto& last = m_bytes.back();
        last = static_cast<char>(static_cast<unsigned char>(last) | part << (8 - used - now));
        m_bits += now;
        count -= now;
    }
}

void BitWriter::word(std::uint64_t value) {
    byte(value);
    byte(value >> 8U);
}

void BitWriter::longWord(std::uint64_t value) {
    word(value);
    word(value >> 16U);
}

void BitWriter::real(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    longWord(bits);
    longWord(bits >> 32U);
}

void BitWriter::bitShort(std::int64_t value) {
    if (value == 0) return bits(2, 2);
    if (value == 256) return bits(3, 2);
    if (value > 0 && value < 256) {
        bits(1, 2);
        return byte(static_cast<std::uint64_t>(value));
    }
    bits(0, 2);
    word(static_cast<std::uint64_t>(value));
}

void BitWriter::bitLong(std::int64_t value) {
    if (value == 0) return bits(2, 2);
    if (value > 0 && value < 256) {
        bits(1, 2);
        return byte(static_cast<std::uint64_t>(value));
    }
    bits(0, 2);
    longWord(static_cast<std::uint64_t>(value));
}

void BitWriter::bitReal(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    if (bits == 0) return this->bits(2, 2);
    if (value == 1.0) return this->bits(1, 2);
    this->bits(0, 2);
    real(value);
}

void BitWriter::handle(unsigned code, std::uint64_t value) {
    unsigned count = 0;
    while (count < 8 && value >> (8 * count) != 0) ++count;
    bits(code, 4);
    bits(count, 4);
    for (; count > 0; --count) byte(value >> (8 * (count - 1)));
}

void BitWriter::text(std::string_view bytes) {
    for (const char c : bytes) byte(static_cast<unsigned char>(c));
}

void BitWriter::copy(std::string_view bytes, std::uint64_t from, std::uint64_t to) {
    if (from % 8 == 0 && m_bits % 8 == 0) {
        const std::uint64_t whole = (to - from) / 8;
        m_bytes +=
            bytes.substr(static_cast<std::size_t>(from / 8), static_cast<std::size_t>(whole));
        m_bits += whole * 8;
        from += whole * 8;
    }
    BitReader reader(bytes, from, to);
    while (reader.remaining() >= 8) byte(reader.byte());
    while (reader.remaining() > 0) bit(reader.bit());
}

void appendNumber(std::string& bytes, std::uint64_t value, std::size_t count) {
    for (; count > 0; --count, value >>= 8U) bytes += static_cast<char>(value & 0xFFU);
}

void appendHighFirst(std::string& bytes, std::uint64_t value, std::size_t count) {
    for (; count > 0; --count) bytes += static_cast<char>(value >> (8 * (count - 1)) & 0xFFU);
}

void appendModularChar(std::string& bytes, std::int64_t value) {
    auto rest = static_cast<std::uint64_t>(value < 0 ? -value : value);
    for (; rest > 0x3F; rest >>= 7U) bytes += static_cast<char>((rest & 0x7FU) | 0x80U);
    bytes += static_cast<char>(rest | (value < 0 ? 0x40U : 0U));
}

void appendUnsignedModularChar(std::string& bytes, std::uint64_t value) {
    for (; value > 0x7F; value >>= 7U) bytes += static_cast<char>((value & 0x7FU) | 0x80U);
    bytes += static_cast<char>(value);
}

void appendModularShort(std::string& bytes, std::uint64_t value) {
    for (; value > 0x7FFF; value >>= 15U) appendNumber(bytes, (value & 0x7FFFU) | 0x8000U, 2);
    appendNumber(bytes, value, 2);
}

std::string utf16Of(std::string_view text) {
    std::string units;
    const auto add = [&units](std::uint32_t unit) { appendNumber(units, unit, 2); };
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        std::uint32_t c = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t k = 1; k < length && i + k < text.size(); ++k)
            c = c << 6U | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        i += length;
        if (c < 0x10000) {
            add(c);
        } else {
            add(0xD800 + ((c - 0x10000) >> 10U));
            add(0xDC00 + ((c - 0x10000) & 0x3FFU));
        }
    }
    return units;
}

}  // namespace mor::host
