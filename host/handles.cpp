#include "host/handles.h"

#include <array>
#include <string_view>

namespace mor::host {

std::string handleText(std::uint64_t handle) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::array<char, 16> text{};
    auto* begin = text.end();
    for (; handle != 0; handle >>= 4U) *--begin = kDigits[handle & 15U];
    return {begin, text.end()};
}

}  // namespace mor::host
