#include "host/documents/running_counters.h"

#include "host/permanent.h"

namespace mor::host {

Counters& runningCounters() {
    static Permanent<Counters> s_counters;
    return *s_counters;
}

Counters counters() { return runningCounters(); }

void resetCounters() {
    Counters fresh;
    fresh.locksHeld = runningCounters().locksHeld;
    fresh.selectionSetsOpen = runningCounters().selectionSetsOpen;
    fresh.resbufsOpen = runningCounters().resbufsOpen;
    runningCounters() = fresh;
}

}  // namespace mor::host
