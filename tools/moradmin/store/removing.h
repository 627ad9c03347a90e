#pragma once

#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// Removes a file; refuses (exit 6) when it is still there afterwards.
void removeFile(Session& session, const std::wstring& path);

/// Removes a directory with all that lies below it. Refuses (exit 4) when a link from elsewhere
/// leads into it: what that link reaches would be gone too, and the link dead.
void removeDirectory(Session& session, const std::wstring& path);

/// Removes what lies in a directory, and leaves the directory.
void removeEverything(Session& session, const std::wstring& directory);

/// Removes the store: no directory is left, and no root link that would name one. `extended`:
/// entities on the control layer inside blocks go to layer 0 too.
void removeStore(Session& session, bool extended);

/// Removes what an empty store leaves behind: its block, its layer and its application's name,
/// where nothing else uses them; a note tells what stays and why.
void removeTraces(Session& session);

}  // namespace mor::tool
