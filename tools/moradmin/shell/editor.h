#pragma once

#include "tools/moradmin/shell/terminal.h"

#include <memory>
#include <optional>
#include <string>

namespace mor::tool {

/// Reads lines: on a terminal with editing, history and completion, else as they come.
class LineEditor {
public:
    /// Throws Failure when there is a terminal and no editor for it.
    explicit LineEditor(Complete complete);

    /// A line without its end; none at the end of the input. A line that Ctrl-C gave up is empty.
    [[nodiscard]] std::optional<std::string> read(const std::string& prompt);
    /// Keeps a line in the history.
    void remember(const std::string& line);
    /// Whether Ctrl-C gave up the line that was read last.
    [[nodiscard]] bool gaveUp() const { return m_terminal && m_terminal->gaveUp(); }

private:
    std::unique_ptr<Terminal> m_terminal;  ///< null without a terminal
};

}  // namespace mor::tool
