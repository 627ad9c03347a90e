#pragma once

#include "tools/moradmin/damage/store_state.h"
#include "tools/moradmin/output.h"

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// What stands under one path of a store: a directory, or a file with its value as it prints.
struct Held {
    bool directory = false;
    std::string lisp;

    friend bool operator==(const Held&, const Held&) = default;
};

/// Everything in a store, by path.
using Contents = std::map<std::wstring, Held>;

/// What the records say, whether the library could follow the links or not.
[[nodiscard]] Contents contentsOf(const StoreState& state);

/// One path under which two stores hold something else.
struct Difference {
    std::wstring path;
    std::optional<Held> before;  ///< none: it is added
    std::optional<Held> after;   ///< none: it is removed

    /// "added", "removed" or "changed".
    [[nodiscard]] const char* kind() const;
};
/// What is removed and changed by path, then what is added.
[[nodiscard]] std::vector<Difference> differences(const Contents& before, const Contents& after);

/// "~ /cfg/scale<TAB>0.02<TAB>-><TAB>0.05" and the like, a line end behind it.
void printDifference(std::ostream& out, const Difference& difference);
/// Puts change, path, before and after into an object.
void addDifference(Json& object, const Difference& difference);

}  // namespace mor::tool
