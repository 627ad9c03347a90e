#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The inner loops of sums, with what the processor has.
namespace mor::host {

inline constexpr std::size_t kFoldBytes = 16;
inline constexpr std::size_t kSumBlock = 64;

/// Folds `bytes` into 16 whose crc16 with seed 0 is theirs with `seed`. False when there are fewer,
/// or the processor cannot.
bool foldCrc16(std::uint16_t seed, std::string_view bytes, char* folded);

/// Two running sums: of the bytes, and of the first sum after each byte.
struct RunningSums {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

/// Adds whole blocks, so few that no sum overflows. `swapped`: of each eight bytes the two-byte
/// words count in reverse order.
void addBlocks(RunningSums& sums, const char* bytes, std::size_t blocks, bool swapped);

}  // namespace mor::host
