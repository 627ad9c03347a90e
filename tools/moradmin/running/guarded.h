#pragma once

#include "tools/moradmin/options.h"

#include <functional>

namespace mor::tool {

/// Of two exit codes the one that several answers end with.
[[nodiscard]] int moreSerious(int a, int b);

/// Writes out what was printed; throws Failure when that is not possible.
void flushOutput();

/// Runs what may throw, says on stderr why it ended, and answers the exit code. A drawing that
/// could only be read up to a place makes it kDamaged at least.
int guarded(const Options& options, const std::function<int()>& run);

}  // namespace mor::tool
