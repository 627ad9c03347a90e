#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace mor::tool {

/// One command of a script.
struct ScriptLine {
    std::size_t number = 0;   ///< of the line where it begins, from 1
    std::size_t command = 0;  ///< which one of that line, from 1
    std::vector<std::string> words;
};

/// Cuts a script into commands of words, as a shell does: blanks split words, quotes keep them
/// together, a backslash takes the next character as it is, `#` begins a comment, line ends and `;`
/// end a command. A word that begins with a parenthesis is a list and goes to the one that closes
/// it, as it stands. Throws Failure for a quote or list that is not closed.
[[nodiscard]] std::vector<ScriptLine> readScript(const std::string& text);

/// Whether the text ends within a quote or a list.
[[nodiscard]] bool isUnfinished(const std::string& text);

}  // namespace mor::tool
