#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// What the last word of a line may be meant as.
using Complete = std::function<std::vector<std::string>(const std::string& line)>;

/// A line editor on the terminal, with history and completion. It lies in a module of its own.
class Terminal {
public:
    Terminal() = default;
    virtual ~Terminal() = default;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// A line without its end; none at the end of the input. A line that Ctrl-C gave up is empty.
    [[nodiscard]] virtual std::optional<std::string> read(const std::string& prompt) = 0;
    /// Keeps a line in the history.
    virtual void remember(const std::string& line) = 0;
    /// Whether Ctrl-C gave up the line that was read last.
    [[nodiscard]] virtual bool gaveUp() const = 0;
};

}  // namespace mor::tool
