#pragma once

#include "platform/documents.h"
#include "tools/moradmin/damage/store_state.h"

namespace mor::tool {

/// What the records of a drawing say about its store. Looks at nothing else and changes nothing.
[[nodiscard]] StoreState walkStore(const AcApDocument* document);

}  // namespace mor::tool
