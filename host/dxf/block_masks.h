#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mor::host {

/// Bytes that are looked at together, a bit each in a mask, the first one the lowest.
inline constexpr std::size_t kBlock = 64;
/// Blocks that are looked at together.
inline constexpr std::size_t kBlocks = 64;

/// A mask for each of so many blocks.
using Masks = std::array<std::uint64_t, kBlocks>;

/// What the bytes of blocks are.
struct BlockMasks {
    Masks feed{};
    Masks blank{};
    Masks digit{};
    Masks zero{};
    Masks seven{};
    Masks carriage{};  ///< returns
    Masks odd{};       ///< behind the first line feed of the block, the third and so on
};

/// Looks at whole blocks, `kBlocks` at most, with what the processor has.
void maskBlocks(const char* text, std::size_t blocks, BlockMasks& masks);

}  // namespace mor::host
