#pragma once

#include "tools/moradmin/damage/store_state.h"
#include "tools/moradmin/output.h"

#include <string>

namespace mor::tool {

/// One line: what the library itself would do with such a store when a drawing is opened.
[[nodiscard]] std::string libraryAnswer(const StoreState& state);
[[nodiscard]] Json findingJson(const Finding& finding);
/// One line on stdout; `file` may be empty.
void printFinding(const std::string& file, const Finding& finding);

}  // namespace mor::tool
