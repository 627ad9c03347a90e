#pragma once

#include <string_view>

namespace mor::host {

/// Writes on the command line, unformatted: to the printer that is set, else to the captured text.
void printText(std::wstring_view text);

}  // namespace mor::host
