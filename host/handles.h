#pragma once

#include <cstdint>
#include <string>

namespace mor::host {

/// Upper-case hexadecimal; empty for 0.
[[nodiscard]] std::string handleText(std::uint64_t handle);

}  // namespace mor::host
