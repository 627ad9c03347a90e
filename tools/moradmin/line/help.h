#pragma once

#include "tools/moradmin/commands.h"

#include <string>
#include <string_view>

namespace mor::tool {

void printVersion(const Options& options);
/// All commands, and what holds for all of them.
void printOverview();
/// Everything about one command.
void printPage(const Command& command);

/// A call of the command that works in a copy of the sample drawings; each command has one.
[[nodiscard]] std::string_view exampleOf(const Command& command);
/// What the words behind a command mean: name and text.
struct WordHelp {
    std::string name;
    std::string text;
};
[[nodiscard]] std::vector<WordHelp> wordsOf(const Command& command);

inline constexpr std::string_view kExitCodes =
    "0 done, 1 the answer is no, 2 called wrongly, 3 the drawing cannot be read, 4 damage is left, "
    "5 the drawing cannot be written, 6 the store refused, 130 interrupted";

}  // namespace mor::tool
