#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// What the operations of the platform count, for tests.
namespace mor::host {

struct Counters {
    std::size_t flushesReactorsOn = 0;
    std::size_t flushesReactorsOff = 0;
    std::size_t locksTaken = 0;
    std::size_t locksHeld = 0;  ///< over all documents, at this moment
    std::size_t selectionSetsOpen = 0;
    std::size_t resbufsOpen = 0;
    std::vector<std::pair<int, std::wstring>> lastFilter;  ///< of the last `acedSSGet`
};
[[nodiscard]] Counters counters();
void resetCounters();  ///< the running totals; what is held or open stays

}  // namespace mor::host
