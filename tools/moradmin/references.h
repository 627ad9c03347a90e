#pragma once

#include "tools/moradmin/session.h"

#include <string>
#include <vector>

namespace mor::tool {

/// The references of the session's drawing that are loaded, nested ones behind their referring one,
/// by the path of references.
[[nodiscard]] std::vector<std::wstring> loadedReferences(const Session& session);

}  // namespace mor::tool
