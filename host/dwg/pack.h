#pragma once

#include <string>
#include <string_view>

namespace mor::host {

/// Packs a page of R2004, R2010 and later, so that `unpack` gives it back.
[[nodiscard]] std::string pack(std::string_view page);

}  // namespace mor::host
