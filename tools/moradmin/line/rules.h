#pragma once

#include "tools/moradmin/commands.h"
#include "tools/moradmin/options.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace mor::tool {

inline constexpr std::string_view kDrawingWord = "drawing";
inline constexpr std::string_view kArgumentWords = "arguments";

/// The rules by which the words behind a command fill `options`.
[[nodiscard]] std::unique_ptr<CLI::App> rulesFor(const Command& command, Options& options);

/// One option as help, manual and completion show it.
struct OptionHelp {
    std::vector<std::string> names;  ///< -r, --recursive
    std::string value;               ///< what stands behind it, such as FILE; empty for none
    std::string text;
};
/// The options that a command takes, --help excluded.
[[nodiscard]] std::vector<OptionHelp> optionsOf(const Command& command);

/// The options of all commands that take a word behind them.
[[nodiscard]] std::set<std::string> valuedOptions();

/// The command of that name; null when there is none.
[[nodiscard]] const Command* commandNamed(std::string_view name);
/// What a word that is no command is told.
[[nodiscard]] std::string noCommand(const std::string& word);
/// How a command is called: "moradmin cat DRAWING PATH...".
[[nodiscard]] std::string usageOf(const Command& command);

}  // namespace mor::tool
