#include "host/text/numbers.h"

#include "host/text/ascii.h"

#include <array>
#include <charconv>
#include <cmath>

namespace mor::host {

std::string realText(double value) {
    std::array<char, 40> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    static_cast<void>(error);
    std::string text(buffer.data(), end);
    const std::size_t exponent = text.find('e');
    if (text.find('.') == std::string::npos)
        text.insert(exponent == std::string::npos ? text.size() : exponent, ".0");
    return text;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t value = 0;
    const char* const stop = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), stop, value);
    if (error != std::errc{}) return std::nullopt;
    if (end == stop) return value;
    // Other writers put 1071 as 1.95059E+06.
    const auto real = parseReal(text);
    if (!real || std::trunc(*real) != *real || std::fabs(*real) > 9.0e15) return std::nullopt;
    return static_cast<std::int64_t>(*real);
}

std::optional<double> parseReal(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0.0;
    const char* const stop = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), stop, value);
    if (error == std::errc::result_out_of_range && end == stop) {
        // Too small for a double reads as nothing, too large is no number.
        return text.find("e-") != std::string_view::npos ||
                       text.find("E-") != std::string_view::npos
                   ? std::optional(0.0)
                   : std::nullopt;
    }
    if (error != std::errc{} || end != stop || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace mor::host
