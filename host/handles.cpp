#include "host/handles.h"

#include <string_view>

namespace mor::host {

std::string handleText(std::uint64_t handle) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (; handle != 0; handle >>= 4U) text.insert(text.begin(), kDigits[handle & 15U]);
    return text;
}

}  // namespace mor::host
