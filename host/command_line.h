#pragma once

#include "platform/lisp.h"

#include <functional>
#include <string>
#include <string_view>

/// Command line, break key and system variables.
namespace mor::host {

/// What was printed since the last call. Empty while a printer is set.
[[nodiscard]] std::wstring takePrintedText();
/// Sends printed text on as it comes; an empty function goes back to capturing.
void setPrinter(std::function<void(std::wstring_view)> printer);
/// The next poll of the break key answers yes, once. Safe to call from a signal handler.
void pressBreakKey() noexcept;
/// Sets a system variable of the application; nil removes it. `name` in any case.
void setSystemVariable(std::wstring_view name, const CMORAdsLispVar& value);

}  // namespace mor::host
