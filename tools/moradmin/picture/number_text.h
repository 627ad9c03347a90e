#pragma once

#include <cstddef>
#include <string>

namespace mor::tool {

/// Room that the text of any number takes at most.
inline constexpr std::size_t kLongestNumber = 40;

/// A number with the shortest digits that read back to the same bits, without a needless ".0".
/// Large and small ones are written with an exponent where that is shorter.
[[nodiscard]] std::string numberText(double value);
/// Writes the same there; answers where it ends.
[[nodiscard]] char* putNumber(char* to, double value);

}  // namespace mor::tool
