#pragma once

#include <cstddef>
#include <cstdint>
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
    void skip(std::uint64_t bits);
    /// Whether that many elements of at least so many bits can follow; fails when they cannot.
    bool holds(std::uint64_t count, std::uint64_t bitsEach = 1);

    bool bit() { return take(1) != 0; }
    unsigned twoBits() { return static_cast<unsigned>(take(2)); }
    std::uint8_t byte() { return static_cast<std::uint8_t>(take(8)); }
    std::uint16_t word();
    std::uint32_t longWord();
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
    std::uint64_t take(unsigned bits);  ///< at most 57

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
    std::uint8_t byte();
    std::uint16_t word();
    std::uint16_t wordHighFirst();
    std::uint32_t longWord();
    std::uint64_t number(std::size_t count);  ///< at most 8 bytes
    double real();
    std::int64_t modularChar();           ///< seven bits a byte, with a sign
    std::uint64_t unsignedModularChar();  ///< without one
    std::uint64_t modularShort();         ///< fifteen bits a word

private:
    std::string_view m_bytes;
    std::size_t m_at = 0;
    bool m_failed = false;
};

}  // namespace mor::host
