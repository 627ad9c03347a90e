#pragma once

#include "host/dxf/block_masks.h"

#include <cstddef>
#include <cstdint>

namespace mor::host {

/// Tells the lines of codes apart from those of values, some blocks at a time, as long as all codes
/// have their usual form: blanks, then one to four digits of which the first is no 0 but in the
/// code 0, then the line end that the file has.
class PlainLines {
public:
    /// `returns`: carriage returns stand before the line feeds. The text begins with a code.
    explicit PlainLines(bool returns);

    /// Finds what `codes` and `odd` give. What is not in `kept` of the last block is not looked at;
    /// after fewer than `kBlocks` blocks none can follow.
    void look(const BlockMasks& masks, std::size_t blocks, std::uint64_t kept);
    /// Behind the last digit, the codes of one digit, of three or four, and those that end in 7:
    /// all that may be noted, and some others.
    [[nodiscard]] const Masks& codes() const { return m_codes; }
    /// In or behind lines of codes of another form; nothing else behind the first bit is right
    /// then.
    [[nodiscard]] std::uint64_t odd(std::size_t block) const { return m_odd[block]; }
    /// The first block with odd bits; `kBlocks` where there is none.
    [[nodiscard]] std::size_t firstOdd() const { return m_firstOdd; }
    /// Whether a code stands without its value.
    [[nodiscard]] bool valueIsOpen() const { return m_open != 0; }

private:
    /// Of the block before the first one too, which has number 0.
    using Row = std::array<std::uint64_t, kBlocks + 1>;
    struct Rows {
        std::uint64_t returns = 0;
        Row front{};
        Row digit{};
        Row code{};
        Row run{};
        Row leading{};
        Row carriage{};
        Row seven{};
    };
    struct Ways;

    std::uint64_t m_open = 0;  // all ones while a value is open
    Rows m_rows;
    Masks m_codes{};
    Masks m_odd{};
    std::size_t m_firstOdd = kBlocks;
};

}  // namespace mor::host
