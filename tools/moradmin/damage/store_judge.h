#pragma once

#include "tools/moradmin/damage/store_state.h"

#include <vector>

namespace mor::tool {

/// Adds what is wrong with a directory itself: its place, its room, the names in it. Links are the
/// walk's business.
void judgeDirectory(const StoredDirectory& directory, std::vector<Finding>& findings);
/// Adds that no path leads to a directory, though links may: its values are out of reach.
void judgeUnreachable(const StoredDirectory& directory, std::vector<Finding>& findings);
/// Adds what is wrong with the control layer and the application of the attributes. `used`: whether
/// any directory has attributes.
void judgeSurroundings(const AcApDocument* document, bool directories, bool used,
                       std::vector<Finding>& findings);

}  // namespace mor::tool
