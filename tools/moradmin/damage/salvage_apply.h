#pragma once

#include "tools/moradmin/damage/salvage_plan.h"
#include "tools/moradmin/session.h"

#include <string>
#include <vector>

namespace mor::tool {

/// Rebuilds the tree after the plan; answers a line for each thing that was done.
[[nodiscard]] std::vector<std::string> applySalvage(Session& session, const StoreState& state,
                                                    const SalvagePlan& plan);

}  // namespace mor::tool
