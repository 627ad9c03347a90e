#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace mor::tool {

/// A line on a terminal that says how far the work on many drawings is, when it takes long. It is
/// taken away before anything else is printed.
class Progress {
public:
    /// `files` must outlive it.
    Progress(const std::vector<std::string>& files, bool wanted);
    ~Progress() { end(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The work on a drawing begins.
    void begin(std::size_t number);
    void end();
    /// Takes the line away for now; may be called by a signal handler.
    static void clear() noexcept;

private:
    const std::vector<std::string>& m_files;
    bool m_wanted;
    std::chrono::steady_clock::time_point m_shown;
};

}  // namespace mor::tool
