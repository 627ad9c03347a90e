#pragma once

#include <string>
#include <unordered_map>

namespace mor::tool {

/// How colours of the palette are told apart from those that are taken from elsewhere.
inline constexpr int kByBlock = 0;
inline constexpr int kByLayer = 256;
/// Black or white, what is seen better: number 7 of the palette. All others are 0xRRGGBB.
inline constexpr int kForeground = 0x1000000;
inline constexpr int kWhite = 0xFFFFFF;

/// A number of the drawing palette, 1 to 255; anything else is the foreground.
[[nodiscard]] int paletteColour(int number);
/// "#rrggbb".
[[nodiscard]] std::string colourText(int rgb);
/// "#rgb", "#rrggbb", or one of black, white, grey, transparent (-1); -2 for anything else.
[[nodiscard]] int readColour(const std::string& text);

/// Colours as they show on a background.
class Palette {
public:
    /// `exact`: only the foreground minds the background.
    Palette(int background, bool exact) : m_background(background), m_exact(exact) {}

    [[nodiscard]] int background() const { return m_background; }
    /// Of lines and letters: what would hardly be seen there is darkened, or lightened.
    [[nodiscard]] int line(int colour) const;
    [[nodiscard]] int area(int colour) const;

private:
    [[nodiscard]] bool isDark() const;
    [[nodiscard]] int seen(int colour) const;
    int m_background;
    bool m_exact;
    mutable std::unordered_map<int, int> m_seen;  ///< how colours show that were asked for
    mutable int m_last = -1;                      ///< the last one of them
    mutable int m_lastSeen = 0;
};

}  // namespace mor::tool
