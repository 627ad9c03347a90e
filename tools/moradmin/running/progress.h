#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace mor::tool {

/// While it lives, and once the work has lasted a second, a line on a terminal's stderr says what
/// is done and for how long. It goes away, and stays away until `nowDoing` is called, as soon as
/// anything is printed. One at a time; none but `wanted` ones, and none on a dumb terminal.
class Ticking {
public:
    Ticking(const std::string& what, bool wanted);
    ~Ticking();
    Ticking(const Ticking&) = delete;
    Ticking& operator=(const Ticking&) = delete;

private:
    class Watched;
    std::unique_ptr<Watched> m_out;
    std::unique_ptr<Watched> m_err;
};

/// What is done from now on, such as "saving plan.dxf"; when empty, what the work as a whole is.
void nowDoing(const std::string& what);

/// That line says how far the work on many drawings is, too.
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
    /// No line until `nowDoing` is called.
    static void pause() noexcept;
    /// The line belongs to another process: this one is a child of it.
    static void leave() noexcept;

private:
    const std::vector<std::string>& m_files;
    bool m_wanted;
    std::chrono::steady_clock::time_point m_shown;
};

}  // namespace mor::tool
