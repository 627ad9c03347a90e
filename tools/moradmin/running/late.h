#pragma once

namespace mor::tool {

/// A function of a module of the program, which is loaded when it is first asked for: libraries
/// that few commands need take longer to load than most commands last. A loaded module stays
/// loaded. Throws Failure when the module is missing.
[[nodiscard]] void* lateFunction(const char* module, const char* name);

}  // namespace mor::tool
