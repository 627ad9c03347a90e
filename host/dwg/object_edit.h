#pragma once

#include "host/dwg/bit_writer.h"
#include "host/dwg/object_frame.h"

#include <cstdint>
#include <string>
#include <vector>

/// New versions of objects: only what changes is encoded anew, all other bits are copied.
namespace mor::host {

/// Bits of an object that are exchanged for others. `begin` == `end`: nothing goes.
struct BitSplice {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    BitWriter bits;
    bool handle = false;  ///< among the handles; tells where bits go that stand between
};

/// The parts of an object before it gets its size and sum.
struct ObjectBits {
    BitWriter data;            ///< from its type on, strings and their length included
    std::uint64_t sizeAt = 0;  ///< where the data's size in bits stands in them; up to R2007
    BitWriter handles;
};

/// A whole object, size and sum included.
[[nodiscard]] std::string sealed(ObjectBits object, Release release);

/// The object with the splices done. `handlesEnd`: where its last handle ends; what lies behind
/// goes, but for objects of which that is not known.
[[nodiscard]] std::string spliced(const ObjectFrame& frame, Release release,
                                  std::vector<BitSplice> splices, std::uint64_t handlesEnd);

}  // namespace mor::host
