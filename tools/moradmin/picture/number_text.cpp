#include "tools/moradmin/picture/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace mor::tool {

namespace {

// Between these no number of at most six decimals is shorter with an exponent, but for those of
// many noughts.
constexpr double kLeast = 0.001;
constexpr double kMost = 1e9;
constexpr std::uint32_t kManyNoughts = 100'000;
constexpr std::uint32_t kMillion = 1'000'000;

/// Digits of the numbers below a hundred, two each.
constexpr auto kPairs = [] {
    std::array<char, 200> digits{};
    for (std::size_t i = 0; i < 100; ++i) {
        digits[2 * i] = static_cast<char>('0' + i / 10);
        digits[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return digits;
}();

char* putAny(char* to, double value) {
    const auto [end, error] = std::to_chars(to, to + kLongestNumber, value);
    static_cast<void>(error);  // there is room for every double
    return end;
}

char* putMillionths(char* to, std::uint32_t millionths) {
    *to++ = '.';
    for (const std::uint32_t unit : {10'000U, 100U, 1U}) {
        const std::size_t pair = millionths / unit % 100;
        *to++ = kPairs[2 * pair];
        *to++ = kPairs[2 * pair + 1];
    }
    while (to[-1] == '0') --to;
    return to;
}

}  // namespace

// Most numbers of drawings are whole millionths, of at most fifteen digits: two of those never read
// back as the same double, so that no others are shorter.
char* putNumber(char* to, double value) {
    const double size = std::fabs(value);
    if (size == 0.0) return putAny(to, 0.0);
    if (!(size >= kLeast && size < kMost)) return putAny(to, value);
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): a wrong one is noticed in the next line
    const auto millionths = static_cast<std::uint64_t>(size * kMillion + 0.5);
    if (static_cast<double>(millionths) / kMillion != size) return putAny(to, value);
    const auto whole = static_cast<std::uint32_t>(millionths / kMillion);
    const auto part = static_cast<std::uint32_t>(millionths % kMillion);
    if (part == 0 && whole % kManyNoughts == 0) return putAny(to, value);
    if (value < 0.0) *to++ = '-';
    to = std::to_chars(to, to + kLongestNumber, whole).ptr;
    return part == 0 ? to : putMillionths(to, part);
}

std::string numberText(double value) {
    std::array<char, kLongestNumber> buffer{};
    return {buffer.data(), putNumber(buffer.data(), value)};
}

}  // namespace mor::tool
