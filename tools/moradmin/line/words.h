#pragma once

#include "tools/moradmin/options.h"

#include <set>
#include <string>
#include <vector>

namespace mor::tool {

/// The words behind the program's name, the last one first as the parser wants them; those that
/// only look like options or lists marked.
[[nodiscard]] std::vector<std::string> reversedWords(const std::vector<std::string>& words);
/// Takes the marks out of everything that the parser has filled in.
void unmarkAll(Options& options);
[[nodiscard]] std::string withoutMarks(std::string text);

/// The words with the command in front of the options that stood before it. `valued`: the options
/// that take the word behind them.
[[nodiscard]] std::vector<std::string> commandFirst(std::vector<std::string> words,
                                                    const std::set<std::string>& valued);

}  // namespace mor::tool
