#pragma once

#include <string>
#include <string_view>

namespace mor::tool {

/// UTF-8 as characters; what is no UTF-8 as U+FFFD.
[[nodiscard]] std::u32string characters(std::string_view text);
[[nodiscard]] std::string utf8Of(std::u32string_view text);

}  // namespace mor::tool
