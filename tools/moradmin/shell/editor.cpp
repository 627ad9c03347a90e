#include "tools/moradmin/shell/editor.h"

#include "tools/moradmin/running/late.h"

#include <iostream>
#include <unistd.h>
#include <utility>

namespace mor::tool {

LineEditor::LineEditor(Complete complete) {
    if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDOUT_FILENO) != 1) return;
    using Function = Terminal* (*)(Complete*);
    m_terminal.reset(reinterpret_cast<Function>(
        lateFunction("moradmin_editor.so", "moradminTerminal"))(&complete));
}

std::optional<std::string> LineEditor::read(const std::string& prompt) {
    if (m_terminal) return m_terminal->read(prompt);
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    return line;
}

void LineEditor::remember(const std::string& line) {
    if (m_terminal) m_terminal->remember(line);
}

}  // namespace mor::tool
