#pragma once

#include "host/counters.h"

namespace mor::host {

/// What the operations count up and down as they run; `counters()` answers a copy.
[[nodiscard]] Counters& runningCounters();

}  // namespace mor::host
