#include "tools/moradmin/picture/colours.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;
constexpr int kMostNumber = 255;
constexpr int kGrey = 0x808080;
/// Ratio of brightness that lines have to the background at least.
constexpr double kContrast = 1.9;
constexpr double kFlare = 0.05;  ///< light that the darkest colour gives back
/// All channels above this: as good as white.
constexpr int kNearlyWhite = 0xE8;

/// Primary colours, the foreground, two greys.
constexpr std::array<int, 10> kFixed = {kForeground, 0xFF0000, 0xFFFF00,    0x00FF00, 0x00FFFF,
                                        0x0000FF,    0xFF00FF, kForeground, 0x808080, 0xC0C0C0};
constexpr std::array<int, 6> kGreys = {0x333333, 0x5B5B5B, 0x848484, 0xADADAD, 0xD6D6D6, 0xFFFFFF};
/// Brightness of the five pairs of each hue; the second of a pair is half as saturated.
constexpr std::array<double, 5> kBrightness = {1.0, 0.65, 0.5, 0.3, 0.15};

/// One channel of a hue in degrees, fully saturated: 1 at its own angle, 0 opposite.
double channel(double hue, double own) {
    double distance = std::fabs(hue - own);
    if (distance > 180.0) distance = 360.0 - distance;
    return distance <= 60.0 ? 1.0 : distance >= 120.0 ? 0.0 : (120.0 - distance) / 60.0;
}

std::array<int, 3> channels(int rgb) {
    return {(rgb / 0x10000) % 0x100, (rgb / 0x100) % 0x100, rgb % 0x100};
}

int joined(const std::array<double, 3>& channels) {
    int rgb = 0;
    for (const double part : channels)
        rgb = rgb * 0x100 + std::clamp(static_cast<int>(std::lround(part)), 0, 255);
    return rgb;
}

/// How bright a colour is to the eye, from 0 to 1.
double luminance(int rgb) {
    constexpr std::array<double, 3> kShares = {0.2126, 0.7152, 0.0722};
    double sum = 0.0;
    const std::array<int, 3> parts = channels(rgb);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const double part = parts[i] / 255.0;
        sum +=
            kShares[i] * (part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4));
    }
    return sum;
}

double contrast(int a, int b) {
    const double first = luminance(a) + kFlare;
    const double second = luminance(b) + kFlare;
    return std::max(first, second) / std::min(first, second);
}

}  // namespace

int paletteColour(int number) {
    if (number < 1 || number > kMostNumber) return kForeground;
    if (number < kFirstHue) return kFixed[static_cast<std::size_t>(number)];
    if (number >= kFirstGrey) return kGreys[static_cast<std::size_t>(number - kFirstGrey)];
    const int step = number / 10 - 1;
    const double hue = step * 15.0;
    const int shade = number % 10;
    const double brightness = kBrightness[static_cast<std::size_t>(shade / 2)];
    const double least = shade % 2 == 0 ? 0.0 : 0.5;
    int rgb = 0;
    for (const double own : {0.0, 120.0, 240.0}) {
        const double part = least + (1.0 - least) * channel(hue, own);
        rgb = rgb * 0x100 + static_cast<int>(brightness * part * 255.0);
    }
    return rgb;
}

std::string colourText(int rgb) {
    std::array<char, 16> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "#%06x",
                                    static_cast<unsigned>(rgb) & static_cast<unsigned>(kWhite)));
    return text.data();
}

int readColour(const std::string& text) {
    constexpr int kNone = -2;
    static constexpr std::array<std::pair<std::string_view, int>, 5> kWords = {
        {{"black", 0}, {"white", kWhite}, {"grey", kGrey}, {"gray", kGrey}, {"transparent", -1}}};
    for (const auto& [word, rgb] : kWords)
        if (text == word) return rgb;
    if (text.size() != 4 && text.size() != 7) return kNone;
    int value = 0;
    const auto [end, error] =
        std::from_chars(text.data() + 1, text.data() + text.size(), value, 16);
    if (text.front() != '#' || error != std::errc() || end != text.data() + text.size())
        return kNone;
    if (value < 0) return kNone;
    if (text.size() == 7) return value;
    return ((value / 0x100) * 0x10000 + (value / 0x10 % 0x10) * 0x100 + value % 0x10) * 0x11;
}

bool Palette::isDark() const { return m_background >= 0 && luminance(m_background) < 0.18; }

int Palette::area(int colour) const {
    if (colour != kForeground) return colour;
    return isDark() ? kWhite : 0;
}

int Palette::line(int colour) const {
    if (colour == m_last) return m_lastSeen;
    const auto [known, added] = m_seen.try_emplace(colour, 0);
    if (added) known->second = seen(colour);
    m_last = colour;
    m_lastSeen = known->second;
    return m_lastSeen;
}

int Palette::seen(int colour) const {
    const int rgb = area(colour);
    if (m_exact || colour == kForeground) return rgb;
    const int behind = m_background < 0 ? kWhite : m_background;
    if (contrast(rgb, behind) >= kContrast) return rgb;
    const std::array<int, 3> parts = channels(rgb);
    const bool white = *std::ranges::min_element(parts) >= kNearlyWhite;
    if (white && !isDark()) return 0;
    int shown = rgb;
    for (int step = 1; step <= 20 && contrast(shown, behind) < kContrast; ++step) {
        std::array<double, 3> mixed{};
        for (std::size_t i = 0; i < 3; ++i)
            mixed[i] = isDark() ? parts[i] + (255.0 - parts[i]) * step / 20.0
                                : parts[i] * (20.0 - step) / 20.0;
        shown = joined(mixed);
    }
    return shown;
}

}  // namespace mor::tool
