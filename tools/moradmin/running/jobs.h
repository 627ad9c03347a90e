#pragma once

#include "tools/moradmin/running/progress.h"

#include <cstddef>
#include <functional>

namespace mor::tool {

/// Calls `visit` for 0 to `count` - 1, at most `most` at once, each in a process of its own. What
/// they print comes out in the order of the numbers, and `done` gets their answers in that order.
void visitAtOnce(std::size_t count, int most, Progress& progress,
                 const std::function<int(std::size_t)>& visit,
                 const std::function<void(int)>& done);

}  // namespace mor::tool
