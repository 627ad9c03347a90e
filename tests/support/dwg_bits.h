#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

/// Values as DWG files have them, for tests that make such files themselves.
namespace mor::test {

[[nodiscard]] inline std::uint16_t dwgSum(std::string_view bytes, unsigned seed = 0xC0C1) {
    for (const char c : bytes) {
        seed ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            seed = (seed & 1U) != 0 ? seed >> 1U ^ 0xA001U : seed >> 1U;
    }
    return static_cast<std::uint16_t>(seed);
}

/// Bits, the most significant of each byte first.
class DwgBits {
public:
    DwgBits& bits(std::uint64_t value, int count) {
        while (count-- > 0) m_bits += (value >> static_cast<unsigned>(count) & 1U) != 0 ? '1' : '0';
        return *this;
    }
    DwgBits& flag(bool on) { return bits(on ? 1 : 0, 1); }
    DwgBits& byte(std::uint64_t value) { return bits(value & 0xFFU, 8); }
    /// Lowest byte first.
    DwgBits& number(std::uint64_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8U) byte(value);
        return *this;
    }
    DwgBits& real(double value) { return number(std::bit_cast<std::uint64_t>(value), 8); }
    DwgBits& bitShort(int value) {
        return value == 0 ? bits(2, 2) : bits(0, 2).number(static_cast<std::uint16_t>(value), 2);
    }
    DwgBits& bitLong(std::uint32_t value) {
        return value == 0 ? bits(2, 2) : bits(0, 2).number(value, 4);
    }
    DwgBits& bitReal(double value) {
        return value == 0.0 ? bits(2, 2) : value == 1.0 ? bits(1, 2) : bits(0, 2).real(value);
    }
    DwgBits& point(double x, double y, double z) { return bitReal(x).bitReal(y).bitReal(z); }
    DwgBits& text(std::string_view text) {
        bitShort(static_cast<int>(text.size()));
        for (const char c : text) byte(static_cast<unsigned char>(c));
        return *this;
    }
    DwgBits& handle(int code, std::uint64_t value) {
        int count = 0;
        while (count < 8 && value >> (8U * static_cast<unsigned>(count)) != 0) ++count;
        bits(static_cast<std::uint64_t>(code), 4).bits(static_cast<std::uint64_t>(count), 4);
        return bits(value, 8 * count);
    }
    DwgBits& add(const DwgBits& other) {
        m_bits += other.m_bits;
        return *this;
    }
    /// The same field so many times: b bit, s short, l long, d real, 2 and 3 points, t text, h
    /// handle; all 0.
    DwgBits& zeros(char kind, int count = 1) {
        for (; count > 0; --count) {
            if (kind == 'b') flag(false);
            if (kind == 's' || kind == 'l' || kind == 't') bits(2, 2);
            if (kind == 'd') bits(2, 2);
            if (kind == '2') real(0.0).real(0.0);
            if (kind == '3') bits(0b101010, 6);
            if (kind == 'h') handle(5, 0);
        }
        return *this;
    }
    [[nodiscard]] std::size_t size() const { return m_bits.size(); }
    [[nodiscard]] std::string bytes() const {
        std::string bytes((m_bits.size() + 7) / 8, '\0');
        for (std::size_t i = 0; i < m_bits.size(); ++i)
            if (m_bits[i] == '1')
                bytes[i / 8] = static_cast<char>(static_cast<unsigned char>(bytes[i / 8]) |
                                                 (0x80U >> (i % 8)));
        return bytes;
    }

private:
    std::string m_bits;  // a character each
};

/// Bytes with their sum behind them.
[[nodiscard]] inline std::string dwgSealed(const std::string& bytes) {
    return bytes + DwgBits().number(dwgSum(bytes), 2).bytes();
}

}  // namespace mor::test
