#pragma once

#include "platform/lisp.h"
#include "tools/moradmin/session.h"

#include <string>
#include <vector>

namespace mor::tool {

/// The layout of what `dump` prints and `load` reads.
inline constexpr int kDumpSchema = 1;

/// One file or directory with its path; directories before what they hold, all in stored order.
struct Stored {
    std::wstring path;
    bool directory = false;
    CMORAdsLispVar value;  ///< of a file
};

/// Everything below a directory (not the directory itself), read through the library.
[[nodiscard]] std::vector<Stored> everythingBelow(Session& session, const std::wstring& directory);

/// Stores all items, their paths moved from below `from` to below `to`, and confirms them.
void storeAll(Session& session, const std::vector<Stored>& items, const std::wstring& from,
              const std::wstring& to);

/// Makes a directory, emptied first when `replace`, and stores items below it by their paths.
void storeBelow(Session& session, const std::vector<Stored>& items, const std::wstring& directory,
                bool replace);

}  // namespace mor::tool
