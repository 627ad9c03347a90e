#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The code words of R2007's pages: 255 bytes, data first, parity behind. They are interleaved:
/// code word i of n has its byte j at j * n + i.
namespace mor::host {

inline constexpr std::size_t kCodeWordBytes = 255;
/// How many bytes of a code word are data, in pages that lead to others and in all others.
inline constexpr std::size_t kSystemData = 239;
inline constexpr std::size_t kPageData = 251;

/// The data of `words` code words, `perWord` of each, errors not corrected. Empty when `coded` is
/// too short.
[[nodiscard]] std::string deinterleaved(std::string_view coded, std::size_t words,
                                        std::size_t perWord);

/// Whether the parity of each code word is that of its data.
[[nodiscard]] bool parityHolds(std::string_view coded, std::size_t words, std::size_t perWord);

}  // namespace mor::host
