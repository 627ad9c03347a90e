#pragma once

#include "host/drawing/change.h"
#include "host/dxf/tag_list.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// The bytes of a record with a change; every group that stays keeps its bytes.
[[nodiscard]] std::string patched(std::string_view bytes, const RecordChange& change,
                                  const LineStyle& lines);

/// The value of a group exchanged for another integer, in the width it had.
[[nodiscard]] std::string withInteger(const TagList& record, const Tag& tag, std::int64_t value);

}  // namespace mor::host
