#pragma once

#include <string>

namespace mor::tool {

// What stdin is read as.
inline constexpr const char* kStdinDrawing = "the drawing";
inline constexpr const char* kStdinScript = "the script";
inline constexpr const char* kStdinValue = "a value";

/// From now on stdin is that. Throws Failure (exit 2) when it was something else before: a script
/// is no value too.
void takeStdin(const std::string& use);

/// What a file holds; "-" is stdin, read as `use`. Throws Failure (exit 2) for what cannot be read.
[[nodiscard]] std::string readInput(const std::string& name, const std::string& use = kStdinValue);

/// The same of a text in UTF-8; Failure for anything else too.
[[nodiscard]] std::string readText(const std::string& name);

}  // namespace mor::tool
