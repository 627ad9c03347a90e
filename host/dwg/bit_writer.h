#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mor::host {

/// Puts values into a stream of bits, in the forms that BitReader takes.
class BitWriter {
public:
    [[nodiscard]] std::uint64_t size() const { return m_bits; }  ///< in bits
    /// The last byte is filled with zeros.
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }

    void bits(std::uint64_t value, unsigned count);  ///< the lowest `count` ones
    void bit(bool on) { bits(on ? 1 : 0, 1); }
    void byte(std::uint64_t value) { bits(value & 0xFFU, 8); }
    void word(std::uint64_t value);
    void longWord(std::uint64_t value);
    void real(double value);
    void bitShort(std::int64_t value);
    void bitLong(std::int64_t value);
    void bitReal(double value);
    void handle(unsigned code, std::uint64_t value);
    void text(std::string_view bytes);  ///< as many bytes
    /// Bits `from` to `to` of other bytes.
    void copy(std::string_view bytes, std::uint64_t from, std::uint64_t to);
    void append(const BitWriter& other) { copy(other.m_bytes, 0, other.m_bits); }

private:
    std::string m_bytes;
    std::uint64_t m_bits = 0;
};

/// Numbers as bytes, the lowest first unless said.
void appendNumber(std::string& bytes, std::uint64_t value, std::size_t count);
void appendHighFirst(std::string& bytes, std::uint64_t value, std::size_t count);
void appendModularChar(std::string& bytes, std::int64_t value);           ///< with a sign
void appendUnsignedModularChar(std::string& bytes, std::uint64_t value);  ///< without one
void appendModularShort(std::string& bytes, std::uint64_t value);

/// UTF-8 as UTF-16 units, the lowest byte first.
[[nodiscard]] std::string utf16Of(std::string_view text);

}  // namespace mor::host
