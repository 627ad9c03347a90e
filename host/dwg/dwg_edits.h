#pragma once

#include "host/drawing/codec.h"
#include "host/dwg/dwg_file.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::host {

/// What a save does to the objects of a file.
struct ObjectChanges {
    std::map<std::uint64_t, std::string> written;  ///< new ones and new versions, by handle; sealed
    std::vector<std::uint64_t> erased;             ///< that leave the object map
    std::uint64_t seed = 0;                        ///< $HANDSEED; 0: it stays
    std::vector<PlannedEdit> edits;
    std::string refused;  ///< why it cannot be done; empty when it can

    [[nodiscard]] bool any() const { return !written.empty() || !erased.empty(); }
};

/// Turns edits into objects: those that differ are spliced, new ones encoded, and the lists that
/// lead to them follow.
[[nodiscard]] ObjectChanges objectChanges(const DwgFile& file, const EditSet& edits);

}  // namespace mor::host
