#pragma once

#include <cstddef>
#include <string_view>

/// The two ways in which pages are packed.
namespace mor::host {

/// Unpacks a page of R2004, R2010 and later into `size` bytes of 0 at `out`; what it does not fill
/// stays 0. False for bytes that break off, reach outside, or give more than `size`.
[[nodiscard]] bool unpack(std::string_view packed, char* out, std::size_t size);

/// The same for R2007.
[[nodiscard]] bool unpack2007(std::string_view packed, char* out, std::size_t size);

/// Repeats at `to` the `count` bytes that begin `distance` before it, which it may run into. `room`
/// bytes, at least `count`, may be overwritten.
void repeat(char* to, std::size_t distance, std::size_t count, std::size_t room);

}  // namespace mor::host
