#pragma once

#include <cstddef>
#include <cstdint>

namespace mor::host {

/// Bytes that are looked at together, a bit each in a mask, the first one the lowest.
inline constexpr std::size_t kBlock = 64;

/// What the bytes of a block are.
struct BlockMasks {
    std::uint64_t feed = 0;
    std::uint64_t blank = 0;
    std::uint64_t digit = 0;
    std::uint64_t zero = 0;
    std::uint64_t seven = 0;
    std::uint64_t carriage = 0;  ///< returns
    std::uint64_t odd = 0;       ///< behind the first line feed of the block, the third and so on
};

/// Looks at whole blocks, with what the processor has.
void maskBlocks(const char* text, std::size_t blocks, BlockMasks* masks);

}  // namespace mor::host
