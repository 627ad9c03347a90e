#pragma once

#include "tools/moradmin/session.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace mor::tool {

/// Where every directory of a damaged store shall stand. Decided from the records alone; changes
/// nothing.
struct SalvagePlan {
    struct Place {
        std::size_t directory = 0;  ///< index in the state's directories
        std::wstring path;
        bool moved = false;  ///< it stood elsewhere, or nowhere, before
    };
    std::vector<Place> places;         ///< parents before children
    std::vector<std::size_t> dropped;  ///< directories without values whose path another one has
    std::map<std::wstring, std::size_t> byPath;
};

/// A live link keeps its directory where it is, unless the directory's own "$INFO" says otherwise
/// and another directory's "$INFO" names that path. What no link reaches goes where its "$INFO"
/// says, under a numbered name when that is taken, or to /lost-found.
[[nodiscard]] SalvagePlan planSalvage(const Session& session, const StoreState& state);

/// "/lost-found", then "/lost-found-2" and so on: where what does not say its place goes.
[[nodiscard]] std::wstring lostFound(std::size_t number);

}  // namespace mor::tool
