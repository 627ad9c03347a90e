#pragma once

#include "platform/lisp.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// A file's value; the caller has made sure that it is there. Refuses (exit 6) when it cannot be
/// read.
[[nodiscard]] CMORAdsLispVar valueOf(Session& session, const std::wstring& path);
/// What `cat` and `find` print of a file with --json.
[[nodiscard]] Json valueJson(const Options& options, const std::wstring& path,
                             const CMORAdsLispVar& value);

}  // namespace mor::tool
