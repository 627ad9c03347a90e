#include "tools/moradmin/picture/colours.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace mor::tool {

namespace {

constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;
constexpr unsigned kWhite = 0xFFFFFF;

/// Primary colours, black for white, two greys.
constexpr std::array<int, 10> kFixed = {0x000000, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                        0x0000FF, 0xFF00FF, 0x000000, 0x808080, 0xC0C0C0};
constexpr std::array<int, 6> kGreys = {0x333333, 0x5B5B5B, 0x848484, 0xADADAD, 0xD6D6D6, 0xFFFFFF};
/// Brightness of the five pairs of each hue; the second of a pair is half as saturated.
constexpr std::array<double, 5> kBrightness = {1.0, 0.65, 0.5, 0.3, 0.15};

/// One channel of a hue in degrees, fully saturated: 1 at its own angle, 0 opposite.
double channel(double hue, double own) {
    double distance = std::fabs(hue - own);
    if (distance > 180.0) distance = 360.0 - distance;
    return distance <= 60.0 ? 1.0 : distance >= 120.0 ? 0.0 : (120.0 - distance) / 60.0;
}

}  // namespace

std::string trueColour(int rgb) {
    if ((static_cast<unsigned>(rgb) & kWhite) == kWhite) rgb = 0;  // seen on white paper
    std::array<char, 8> text{};
    static_cast<void>(
        std::snprintf(text.data(), text.size(), "#%06x", static_cast<unsigned>(rgb) & kWhite));
    return text.data();
}

std::string paletteColour(int number) {
    if (number < 0 || number > 255) number = 0;
    if (number < kFirstHue) return trueColour(kFixed[static_cast<std::size_t>(number)]);
    if (number >= kFirstGrey)
        return trueColour(kGreys[static_cast<std::size_t>(number - kFirstGrey)]);
    const int step = number / 10 - 1;
    const double hue = step * 15.0;
    const int shade = number % 10;
    const double brightness = kBrightness[static_cast<std::size_t>(shade / 2)];
    const double least = shade % 2 == 0 ? 0.0 : 0.5;
    int rgb = 0;
    for (const double own : {0.0, 120.0, 240.0}) {
        const double part = least + (1.0 - least) * channel(hue, own);
        rgb = rgb * 256 + static_cast<int>(brightness * part * 255.0);
    }
    return trueColour(rgb);
}

}  // namespace mor::tool
