#pragma once

#include "tools/moradmin/options.h"

#include <string>
#include <vector>

namespace mor::tool {

/// The drawings that the command line names, in its order; with --folders a folder stands for the
/// drawings in it and below, sorted. Folders that cannot be read are told.
[[nodiscard]] std::vector<std::string> namedDrawings(const Options& options);

}  // namespace mor::tool
