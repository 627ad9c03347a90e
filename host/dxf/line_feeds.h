#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace mor::host {

/// Appends the offset of every line feed in `text`, plus `base`. Uses what the processor has.
/// `text` is at most 4 GiB; 64 bytes behind it are readable.
void appendLineFeeds(std::string_view text, std::uint32_t base, std::vector<std::uint32_t>& feeds);

}  // namespace mor::host
