#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The sums by which a DWG file notices damage.
namespace mor::host {

/// Of objects, the object map, header variables and classes.
inline constexpr std::uint16_t kObjectSeed = 0xC0C1;
[[nodiscard]] std::uint16_t crc16(std::uint16_t seed, std::string_view bytes);

/// Whether a sum is the one that is stored; always where tests want to reach what lies behind it.
[[nodiscard]] bool sumsAgree(std::uint32_t sum, std::uint32_t stored);

/// The ordinary one, of the block that leads to all pages.
[[nodiscard]] std::uint32_t crc32(std::string_view bytes);

/// Of pages. The seed of a second part is the sum of the first.
[[nodiscard]] std::uint32_t pageSum(std::uint32_t seed, std::string_view bytes);

/// Of the unpacked bytes of R2007's pages.
[[nodiscard]] std::uint32_t pageSum2007(std::string_view bytes);

/// The first bytes of the sequence that masks the leading block and fills what is left of pages.
[[nodiscard]] std::string byteSequence(std::size_t count);

}  // namespace mor::host
