#pragma once

#include "platform/documents.h"

#include <string>
#include <string_view>

namespace mor::tool {

/// One line of facts about a drawing without its store, the last of which is a number that changes
/// with everything in the drawing that is not the store's.
[[nodiscard]] std::string outsideOf(const AcApDocument* document);

/// The number for the bytes of a file; empty when it cannot be read.
[[nodiscard]] std::string fingerprintOfFile(const std::string& file);

}  // namespace mor::tool
