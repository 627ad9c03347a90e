#pragma once

#include <string>

namespace mor::tool {

/// What a file holds; "-" is stdin. Throws Failure (exit 2) for what cannot be read.
[[nodiscard]] std::string readInput(const std::string& name);

}  // namespace mor::tool
