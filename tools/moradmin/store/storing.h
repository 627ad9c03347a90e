#pragma once

#include "platform/lisp.h"
#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// Stores a value, with the directories on the way; refuses (exit 6) with the reason when it cannot
/// be.
void putValue(Session& session, const std::wstring& path, const CMORAdsLispVar& value);
/// Looks whether the value stands there for a file system object that has seen nothing yet; refuses
/// when not.
void confirmValue(Session& session, Store& fresh, const std::wstring& path,
                  const CMORAdsLispVar& value);
/// Makes a directory and those above it; refuses when one cannot be made.
void putDirectory(Session& session, const std::wstring& path);
/// As `confirmValue`.
void confirmDirectory(Session& session, Store& fresh, const std::wstring& path);

}  // namespace mor::tool
