#include "tools/moradmin/running/progress.h"

#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <csignal>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace mor::tool {

namespace {

constexpr std::chrono::milliseconds kBetween{300};
constexpr std::size_t kWidest = 60;

volatile std::sig_atomic_t s_shown = 0;

}  // namespace

Progress::Progress(const std::vector<std::string>& files, bool wanted)
    : m_files(files),
      m_wanted(wanted && ::isatty(STDERR_FILENO) == 1 && !onDumbTerminal()),
      m_shown(std::chrono::steady_clock::now()) {}

void Progress::begin(std::size_t number) {
    if (!m_wanted) return;
    // What was printed so far comes out now: the line must not stand within it.
    if (s_shown != 0) clear();
    std::cout.flush();
    const auto now = std::chrono::steady_clock::now();
    if (now - m_shown < kBetween) return;
    m_shown = now;
    std::string name = oneLine(m_files[number]);
    if (name.size() > kWidest) name = "..." + name.substr(name.size() - kWidest);
    std::cerr << "\r" << number + 1 << " of " << m_files.size() << "  " << name << "\033[K"
              << std::flush;
    s_shown = 1;
}

void Progress::end() {
    if (m_wanted) clear();
}

void Progress::clear() noexcept {
    if (s_shown == 0) return;
    static constexpr std::string_view kClear = "\r\033[K";
    if (::write(STDERR_FILENO, kClear.data(), kClear.size()) > 0) s_shown = 0;
}

}  // namespace mor::tool
