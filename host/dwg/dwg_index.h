#pragma once

#include "host/drawing/codec.h"
#include "host/dwg/dwg_file.h"
#include "host/result.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// The objects of a DWG file in the order that they have in DXF: tables, blocks, model space, the
/// active layout, all others.
struct DwgIndex {
    LargeVector<std::uint32_t> objects;  ///< by record: its place in the object map; [0] is unused
    std::unordered_map<RecordNumber, unsigned> viewports;  ///< which one of its layout, from 1
};

/// Errors: drawings whose tables or model space cannot be read.
Result<Skeleton> indexDwg(DwgFile& file, const std::string& name, DwgIndex& index);

/// $DWGCODEPAGE for the number of a code page.
[[nodiscard]] std::string codePageName(unsigned number);

}  // namespace mor::host
