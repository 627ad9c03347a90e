#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/dxf_index.h"

#include <string>

namespace mor::host {

/// How the drawing is written: copies of what nobody touched, in its place, and what was made or
/// changed.
[[nodiscard]] SavePlan planSave(const DxfIndex& index, const EditSet& edits);

/// Compares a file that was written with its plan: copied records by place, type and handle,
/// written ones byte by byte and by where they begin. Empty when they agree, else what differs.
[[nodiscard]] std::string comparePlan(const SavePlan& plan, const DxfIndex& index,
                                      const EditSet& edits, const Indexed& written);

}  // namespace mor::host
