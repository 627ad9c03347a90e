#pragma once

#include "host/drawing/drawing.h"
#include "host/host.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mor::host {

/// One stretch of the file to be written: records copied from the file as loaded, or bytes.
struct PlanPiece {
    RecordNumber first = 0;  ///< 0: bytes
    RecordNumber last = 0;
    std::uint64_t from = 0;  ///< of a copy: where it begins in the source
    std::uint64_t size = 0;
    std::string bytes;
    std::vector<std::size_t> starts;  ///< where the records in `bytes` begin
};

/// How a drawing is written: copies of what nobody touched, in its place, and what was made or
/// changed.
struct SavePlan {
    std::vector<PlanPiece> pieces;
    std::vector<SavedEdit> edits;
    std::uint64_t size = 0;
};

[[nodiscard]] SavePlan planSave(Drawing& drawing);

/// Compares a file that was written with its plan: copied records by place, type and handle,
/// written ones byte by byte and by where they begin. Empty when they agree, else what differs.
[[nodiscard]] std::string comparePlan(const SavePlan& plan, const Drawing& drawing,
                                      const DxfIndex& written);

}  // namespace mor::host
