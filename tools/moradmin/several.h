#pragma once

#include "tools/moradmin/options.h"

#include <functional>
#include <string>

namespace mor::tool {

/// Of two exit codes the one that several drawings end with.
[[nodiscard]] int moreSerious(int a, int b);

/// Visits the drawing of the command line and those named behind it. One that fails is reported and
/// does not stop the others; answers the most serious exit code.
int overDrawings(const Options& options, const std::function<int(const std::string&)>& visit);

}  // namespace mor::tool
