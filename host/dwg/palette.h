#pragma once

#include <cstdint>

namespace mor::host {

/// The colour number, 1 to 255, that comes nearest to a red-green-blue value.
[[nodiscard]] int nearestColourNumber(std::int64_t rgb);

}  // namespace mor::host
