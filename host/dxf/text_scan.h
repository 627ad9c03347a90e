#pragma once

#include "host/dxf/dxf_index.h"
#include "host/dxf/structure.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mor::host {

/// What keeps a file from being read to its end.
struct Stop {
    std::string text;
    std::uint64_t line = 0;    ///< from 1; 0 in the binary form
    std::uint64_t offset = 0;  ///< of the group where it shows
    bool foreign = false;      ///< the file is no DXF at all
    bool noCode = false;       ///< a line that should be a group code is none
};

/// Tells the structure the groups of a text file, and finishes it where nothing stops.
std::optional<Stop> scanText(DxfIndex& index, Structure& structure, Scan scan);
/// The same for a binary one.
std::optional<Stop> scanBinary(DxfIndex& index, Structure& structure);

}  // namespace mor::host
