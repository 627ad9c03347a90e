#pragma once

#include "tools/moradmin/options.h"

namespace mor::tool {

/// Runs what the command line says, drawing by drawing; saves what was changed. Answers the exit
/// code, throws Failure.
int runCommand(const Options& options);

}  // namespace mor::tool
