#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers as texts of drawings have them.
namespace mor::host {

/// Blanks around it and a sign may be there; a real without a fraction counts, as some writers put
/// it. Nothing when it is none or beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text);
/// What is too small for a double is 0. Nothing when it is no finite number.
[[nodiscard]] std::optional<double> parseReal(std::string_view text);
/// Shortest digits that read back to the same bits, with a point or an exponent.
[[nodiscard]] std::string realText(double value);
/// Hexadecimal text as a handle; 0 when it is none.
[[nodiscard]] inline std::uint64_t parseHandle(std::string_view text) noexcept {
    constexpr std::size_t kMostDigits = 16;
    while (text.size() > kMostDigits && text.front() == '0') text.remove_prefix(1);
    if (text.size() > kMostDigits) return 0;
    std::uint64_t value = 0;
    for (const char c : text) {
        const unsigned digit = static_cast<unsigned char>(c) - unsigned{'0'};
        const unsigned letter = (static_cast<unsigned char>(c) | 0x20U) - unsigned{'a'};
        if (digit > 9 && letter > 5) return 0;
        value = value << 4U | (digit <= 9 ? digit : letter + 10);
    }
    return value;
}

}  // namespace mor::host
