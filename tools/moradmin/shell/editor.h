#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// Reads lines: on a terminal with editing, history and completion, else as they come.
class LineEditor {
public:
    /// What the last word of a line may be meant as.
    using Complete = std::function<std::vector<std::string>(const std::string& line)>;

    explicit LineEditor(Complete complete);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// A line without its end; none at the end of the input. A line that Ctrl-C gave up is empty.
    [[nodiscard]] std::optional<std::string> read(const std::string& prompt);
    /// Keeps a line in the history.
    void remember(const std::string& line);
    /// Whether Ctrl-C gave up the line that was read last.
    [[nodiscard]] bool gaveUp() const;

private:
    struct Terminal;
    std::unique_ptr<Terminal> m_terminal;  ///< null without a terminal
};

/// What all of the words begin with.
[[nodiscard]] std::string commonBegin(const std::vector<std::string>& words);

}  // namespace mor::tool
