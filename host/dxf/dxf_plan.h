#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/dxf_index.h"

namespace mor::host {

/// How the drawing is written: copies of what nobody touched, in its place, and what was made or
/// changed.
[[nodiscard]] SavePlan planSave(const DxfIndex& index, const EditSet& edits);

}  // namespace mor::host
