#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// The candidate that is most like a word, case aside; empty when none is like it.
[[nodiscard]] std::string nearest(std::string_view word,
                                  const std::vector<std::string>& candidates);

/// What follows a message about a word that is not known: `; did you mean "ls"?`, or else what
/// there is, `; these are: a b`, cut short where there is much; empty where there is nothing.
[[nodiscard]] std::string hintFor(std::string_view word,
                                  const std::vector<std::string>& candidates);

}  // namespace mor::tool
