#include "host/dwg/palette.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace mor::host {

namespace {

using Rgb = std::array<int, 3>;
constexpr int kColours = 256;
constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;

constexpr std::array<Rgb, kFirstHue> kFixed = {{{0, 0, 0},
                                                {255, 0, 0},
                                                {255, 255, 0},
                                                {0, 255, 0},
                                                {0, 255, 255},
                                                {0, 0, 255},
                                                {255, 0, 255},
                                                {255, 255, 255},
                                                {128, 128, 128},
                                                {192, 192, 192}}};
constexpr std::array<int, 6> kGreys = {51, 80, 105, 130, 190, 255};
/// Brightness of the five pairs of each hue; the second of a pair is paler.
constexpr std::array<int, 5> kBrightness = {255, 189, 129, 104, 79};

/// One channel of a hue in degrees: 1 at its own angle, 0 opposite.
double channel(double hue, double own) {
    double distance = std::fabs(hue - own);
    if (distance > 180.0) distance = 360.0 - distance;
    return distance <= 60.0 ? 1.0 : distance >= 120.0 ? 0.0 : (120.0 - distance) / 60.0;
}

Rgb colourOf(int number) {
    if (number < kFirstHue) return kFixed[static_cast<std::size_t>(number)];
    if (number >= kFirstGrey) {
        const int grey = kGreys[static_cast<std::size_t>(number - kFirstGrey)];
        return {grey, grey, grey};
    }
    const int step = number / 10 - 1;
    const double hue = step * 15.0;
    const int shade = number % 10;
    const int brightness = kBrightness[static_cast<std::size_t>(shade / 2)];
    const double least = shade % 2 == 0 ? 0.0 : 2.0 / 3.0;
    Rgb colour{};
    for (std::size_t i = 0; i < colour.size(); ++i) {
        const double part = channel(hue, 120.0 * static_cast<double>(i));
        colour[i] = static_cast<int>(brightness * (least + (1.0 - least) * part));
    }
    return colour;
}

std::array<Rgb, kColours> makePalette() {
    std::array<Rgb, kColours> palette{};
    for (int number = 1; number < kColours; ++number)
        palette[static_cast<std::size_t>(number)] = colourOf(number);
    return palette;
}

}  // namespace

int nearestColourNumber(std::int64_t rgb) {
    static const std::array<Rgb, kColours> palette = makePalette();
    const auto value = static_cast<std::uint32_t>(rgb);
    const Rgb wanted = {static_cast<int>(value >> 16U & 0xFFU),
                        static_cast<int>(value >> 8U & 0xFFU), static_cast<int>(value & 0xFFU)};
    int nearest = 1;
    int least = 3 * kColours;
    for (std::size_t number = 1; number < palette.size(); ++number) {
        int distance = 0;
        for (std::size_t i = 0; i < wanted.size(); ++i)
            distance += std::abs(palette[number][i] - wanted[i]);
        if (distance >= least) continue;
        least = distance;
        nearest = static_cast<int>(number);
    }
    return nearest;
}

}  // namespace mor::host
