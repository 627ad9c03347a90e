#pragma once

#include "tools/moradmin/commands.h"
#include "tools/moradmin/options.h"

#include <string>

namespace mor::tool {

/// Tells drawings from the other words of a command line, and fills `drawings`. A word behind the
/// first drawing that begins with / is a path of the store, unless the command takes none or a file
/// of that name is there. Throws Failure for words that make no sense.
void arrangeWords(Options& options, const Command& command);

}  // namespace mor::tool
