#pragma once

#include <string>

namespace mor::tool {

/// Writes the manual pages, moradmin.1 and one for each command, made from the command table.
/// Throws Failure when they cannot be written.
void writeManual(const std::string& folder);

}  // namespace mor::tool
