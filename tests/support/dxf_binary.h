#pragma once

#include "tests/support/dxf_drawing.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

/// The binary form of small drawings, written without the help of the program that is tested.
namespace mor::test {

namespace detail {

template <typename Number>
void appendRaw(std::string& bytes, Number number) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof number);
}

[[nodiscard]] inline bool within(int code, int first, int last) {
    return code >= first && code <= last;
}

inline void appendValue(std::string& bytes, int code, const std::string& value) {
    const long number = std::atol(value.c_str());
    if (within(code, 10, 59) || within(code, 110, 149) || within(code, 210, 239) ||
        within(code, 460, 469) || within(code, 1010, 1059))
        appendRaw(bytes, std::atof(value.c_str()));
    else if (within(code, 290, 299))
        bytes += static_cast<char>(number);
    else if (within(code, 60, 79) || within(code, 170, 179) || within(code, 270, 289) ||
             within(code, 370, 389) || within(code, 400, 409) || within(code, 1060, 1070))
        appendRaw(bytes, static_cast<std::int16_t>(number));
    else if (within(code, 90, 99) || within(code, 420, 429) || within(code, 440, 459) ||
             code == 1071)
        appendRaw(bytes, static_cast<std::int32_t>(number));
    else
        bytes += value + '\0';
}

}  // namespace detail

/// The bytes of groups, without chunks and 64-bit integers; `shortCodes` as up to R12.
[[nodiscard]] inline std::string dxfBinary(std::string_view groups, bool shortCodes) {
    std::string bytes("AutoCAD Binary DXF\r\n\x1A\0", 22);
    while (!groups.empty()) {
        const std::string_view group = groups.substr(0, detail::groupEnd(groups));
        const std::size_t blank = std::min(group.find(' '), group.size());
        const int code = std::atoi(std::string(group.substr(0, blank)).c_str());
        if (shortCodes && code < 255) {
            bytes += static_cast<char>(code);
        } else {
            if (shortCodes) bytes += '\xFF';
            detail::appendRaw(bytes, static_cast<std::uint16_t>(code));
        }
        detail::appendValue(bytes, code,
                            std::string(group.substr(std::min(blank + 1, group.size()))));
        groups.remove_prefix(std::min(group.size() + 1, groups.size()));
    }
    return bytes;
}

}  // namespace mor::test
