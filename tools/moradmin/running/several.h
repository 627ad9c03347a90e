#pragma once

#include "tools/moradmin/options.h"

#include <functional>

namespace mor::tool {

/// Works on one drawing, the one in `options.drawing`; answers the exit code, may throw.
using Visit = std::function<int(const Options& options)>;

/// Visits the drawings that the command line names. One that fails is reported and does not stop
/// the others; answers the most serious exit code. Of several, each line of the output begins with
/// its drawing, and a line on stderr sums up. --jobs visits several at once, each in a process of
/// its own, with the output in the order of the drawings all the same.
int overDrawings(const Options& options, const Visit& visit);

/// Ends the processes that visit drawings; may be called by a signal handler.
void endVisits() noexcept;

}  // namespace mor::tool
