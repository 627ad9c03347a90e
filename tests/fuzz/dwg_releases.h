#pragma once

#include "host/documents.h"

#include <array>
#include <cstdint>

namespace mor::fuzz {

/// The release of a DWG drawing that a byte of the input chooses.
[[nodiscard]] inline host::Release releaseOf(std::uint8_t byte) {
    using host::Release;
    constexpr std::array releases = {Release::R13,   Release::R14,   Release::R2000,
                                     Release::R2004, Release::R2007, Release::R2010,
                                     Release::R2013, Release::R2018};
    return releases[byte % releases.size()];
}

}  // namespace mor::fuzz
