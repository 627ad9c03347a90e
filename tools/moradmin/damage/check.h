#pragma once

#include "tools/moradmin/damage/store_state.h"

#include <string>

namespace mor::tool {

/// One line: what the library itself would do with such a store when a drawing is opened.
[[nodiscard]] std::string libraryAnswer(const StoreState& state);
/// One line on stdout.
void printFinding(const std::string& file, const Finding& finding);

}  // namespace mor::tool
