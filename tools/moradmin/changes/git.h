#pragma once

#include "tools/moradmin/options.h"

namespace mor::tool {

/// Prints what differs between two versions of a drawing, called with the words that git gives to
/// the program of `diff.NAME.command`: path, file, hash and mode of the old side, file, hash and
/// mode of the new one, and of a rename the new path. A side that is absent is an empty store, one
/// that cannot be read is told. Always kDone: git takes anything else for a failure.
int diffForGit(const Options& options);

}  // namespace mor::tool
