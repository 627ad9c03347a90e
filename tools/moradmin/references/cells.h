#pragma once

#include "platform/geometry.h"
#include "tools/moradmin/references/entity_record.h"

#include <cstddef>
#include <functional>

namespace mor::tool {

// An insert may stand for many, in rows and columns along its turned axes.

[[nodiscard]] std::size_t cellCount(const EntityRecord& insert);

/// Visits the cells with what carries the coordinates of the insert's owner there, `owner` for the
/// first one, which is the insert itself. Ends when `visit` answers false.
void forEachCell(const EntityRecord& insert, const CMORMathTransMatrix& owner,
                 const std::function<bool(const CMORMathTransMatrix& owner)>& visit);

}  // namespace mor::tool
