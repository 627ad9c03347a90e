#pragma once

#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// Removes a directory with all that lies below it. Refuses (exit 4) when a link from elsewhere
/// leads into it: what that link reaches would be gone too, and the link dead.
void removeDirectory(Session& session, const std::wstring& path);

}  // namespace mor::tool
