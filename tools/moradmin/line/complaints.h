#pragma once

#include "tools/moradmin/commands.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace mor::tool {

/// What is wrong with the words behind a command, and what would work. The parser's own texts speak
/// of its parts.
[[nodiscard]] std::string complaintOf(const CLI::ParseError& error, const Command& command,
                                      const std::vector<std::string>& words);

}  // namespace mor::tool
