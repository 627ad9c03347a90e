#pragma once

#include "tools/moradmin/options.h"

namespace mor::tool {

/// Tells the host where references are looked for. Throws Failure for a mapping without "=", and
/// for a folder to confine them to that is not there.
void setReferencePlaces(const Options& options);

}  // namespace mor::tool
