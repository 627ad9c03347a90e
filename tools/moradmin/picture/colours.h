#pragma once

#include <string>

namespace mor::tool {

/// How colours of the palette are told apart from those that are taken from elsewhere.
inline constexpr int kByBlock = 0;
inline constexpr int kByLayer = 256;

/// A number of the drawing palette, 1 to 255, as "#rrggbb" on white paper: 7 and 255, which are
/// white on a dark screen, are black. Anything else is black too.
[[nodiscard]] std::string paletteColour(int number);
/// A true colour, 0xRRGGBB, as "#rrggbb"; white is black here too.
[[nodiscard]] std::string trueColour(int rgb);

}  // namespace mor::tool
