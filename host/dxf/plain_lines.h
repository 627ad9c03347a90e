#pragma once

#include "host/dxf/block_masks.h"

#include <cstdint>

namespace mor::host {

/// Tells the lines of codes apart from those of values, block by block, as long as all codes have
/// their usual form: blanks, then one to four digits of which the first is no 0 but in the code 0,
/// then the line end that the file has.
class PlainLines {
public:
    /// `returns`: carriage returns stand before the line feeds. The text begins with a code.
    explicit PlainLines(bool returns) : m_returns(returns ? ~std::uint64_t{} : 0) {}

    struct Found {
        /// Behind the last digit, the codes of one digit, of three or four, and those that end in
        /// 7: all that may be noted, and some others.
        std::uint64_t codes = 0;
        std::uint64_t odd = 0;  ///< in or behind lines of codes of another form; nothing else
                                ///< behind the first bit is right then
    };
    /// What is not in `kept` is not looked at.
    Found look(const BlockMasks& block, std::uint64_t kept);
    /// Whether a code stands without its value.
    [[nodiscard]] bool valueIsOpen() const { return m_open != 0; }

private:
    /// Moved on by so many bytes; what moves in comes from the block before.
    static std::uint64_t moved(std::uint64_t bits, std::uint64_t before, unsigned bytes) {
        return bits << bytes | before >> (kBlock - bytes);
    }

    std::uint64_t m_returns;
    std::uint64_t m_open = 0;  // all ones while a value is open
    // Of the block before:
    std::uint64_t m_front = std::uint64_t{1} << 63U;
    std::uint64_t m_digit = 0;
    std::uint64_t m_code = 0;
    std::uint64_t m_run = 0;
    std::uint64_t m_leading = 0;
    std::uint64_t m_carriage = 0;
    std::uint64_t m_seven = 0;
};

inline PlainLines::Found PlainLines::look(const BlockMasks& block, std::uint64_t kept) {
    const std::uint64_t feed = block.feed & kept;
    const std::uint64_t open = block.odd ^ m_open;
    const std::uint64_t ends = feed & open;  // of lines of codes
    // The bytes of codes: all before such a line feed, or before the return in front of it.
    const std::uint64_t line = ~open & ~feed & kept;
    const std::uint64_t carriage = block.carriage & line & m_returns;
    const std::uint64_t code = line & ~carriage;
    const std::uint64_t digit = block.digit & code;
    const std::uint64_t last = (ends & ~m_returns) | carriage;
    const std::uint64_t behindDigit = moved(digit, m_digit, 1);
    const std::uint64_t front = feed | (block.blank & code);
    const std::uint64_t behindFront = moved(front, m_front, 1);
    const std::uint64_t leading = block.zero & digit & behindFront;
    const std::uint64_t run = code & moved(code, m_code, 1);
    const std::uint64_t longRun = run & moved(run, m_run, 2) & moved(code, m_code, 4);
    Found found;
    found.odd = (code & ~(block.digit | block.blank)) | (code & block.blank & behindDigit) |
                (last & ~behindDigit) | longRun | (digit & moved(leading, m_leading, 1)) |
                ((moved(carriage, m_carriage, 1) ^ ends) & m_returns & kept);
    const std::uint64_t single = moved(front, m_front, 2);
    const std::uint64_t many = moved(digit, m_digit, 2) & moved(digit, m_digit, 3);
    found.codes = last & (single | many | moved(block.seven & code, m_seven, 1));
    m_open = std::uint64_t{} - (open >> 63U);
    m_front = front;
    m_digit = digit;
    m_code = code;
    m_run = run;
    m_leading = leading;
    m_carriage = carriage;
    m_seven = block.seven & code;
    return found;
}

}  // namespace mor::host
