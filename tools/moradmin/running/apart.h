#pragma once

#include <functional>

namespace mor::tool {

/// Runs what changes nothing in memory that is needed afterwards in a process of its own, which
/// Ctrl-C ends while this one goes on; answers its exit code, kInterrupted when it was ended.
/// `onInterrupt` is what handles SIGINT there; here it should be ignored.
[[nodiscard]] int runApart(void (*onInterrupt)(int), const std::function<int()>& run);

}  // namespace mor::tool
