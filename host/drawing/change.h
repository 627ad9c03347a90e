#pragma once

#include "host/drawing/group.h"
#include "host/records.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace mor::host {

/// How a record differs from what it was loaded or made as.
struct RecordChange {
    std::uint64_t handle = 0;          ///< given to a record that had none
    std::map<int, GroupValue> groups;  ///< first group of that code before the extended data
    /// The whole list of named attributes, its 1001 first; empty: it goes away.
    std::optional<std::vector<NewGroup>> attributes;
};

/// Groups of a record that are exchanged for others.
struct Splice {
    std::size_t begin = 0;  ///< index of the first group that goes
    std::size_t end = 0;    ///< index behind the last one; `begin`: nothing goes
    std::vector<NewGroup> groups;

    /// Whether one group gets another value and all else about it stays.
    [[nodiscard]] bool isNewValue() const { return end == begin + 1 && groups.size() == 1; }
};

/// What is to be done to the record, in order; nothing for what it says already. `record` is the
/// record without the change.
[[nodiscard]] std::vector<Splice> splicesFor(const GroupList& record, const RecordChange& change);

[[nodiscard]] GroupList spliced(GroupList record, const std::vector<Splice>& splices);

}  // namespace mor::host
