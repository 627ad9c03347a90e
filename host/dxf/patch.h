#pragma once

#include "host/drawing/change.h"
#include "host/dxf/form.h"

#include <string>

namespace mor::host {

/// The bytes of a record with a change; every group that stays keeps its bytes.
[[nodiscard]] std::string patched(std::string bytes, const RecordChange& change,
                                  const DxfForm& form);

}  // namespace mor::host
