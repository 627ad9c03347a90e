#pragma once

#include <string>

namespace mor::tool {

/// What a file holds; "-" is stdin. Throws Failure (exit 2) for what cannot be read.
[[nodiscard]] std::string readInput(const std::string& name);

/// From now on stdin is the drawing: `readInput` refuses to take it for anything else.
void noteDrawingOnStdin();

/// The same of a text in UTF-8; Failure for anything else too.
[[nodiscard]] std::string readText(const std::string& name);

}  // namespace mor::tool
