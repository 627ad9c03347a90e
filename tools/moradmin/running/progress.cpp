#include "tools/moradmin/running/progress.h"

#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <streambuf>
#include <string_view>
#include <sys/time.h>
#include <unistd.h>

namespace mor::tool {

namespace {

constexpr std::chrono::milliseconds kBetween{300};
constexpr std::size_t kWidest = 60;
constexpr suseconds_t kTick = 500'000;
constexpr int kTicksInASecond = 2;

/// A signal handler reads all of these. The text that it shows is never the one that is written.
struct Line {
    volatile std::sig_atomic_t shown = 0;
    volatile std::sig_atomic_t ticks = 0;   ///< since the work began; the first after a second
    volatile std::sig_atomic_t active = 0;  ///< nothing was printed since `nowDoing`
    volatile std::sig_atomic_t current = 0;
    std::array<std::array<char, 256>, 2> texts{};
};
Line s_line;
std::string s_whole;   ///< what the work as a whole is
std::string s_before;  ///< "3 of 200  "

void add(std::array<char, 320>& line, std::size_t& length, std::string_view text) {
    for (const char c : text)
        if (length < line.size()) line[length++] = c;
}

/// Only what a signal handler may call.
void onTick(int /*signal*/) {
    s_line.ticks = s_line.ticks + 1;
    if (s_line.active == 0) return;
    std::array<char, 20> digits{};
    std::size_t first = digits.size();
    for (int seconds = 1 + (s_line.ticks - 1) / kTicksInASecond; seconds > 0; seconds /= 10)
        digits[--first] = static_cast<char>('0' + seconds % 10);
    std::array<char, 320> line{};
    std::size_t length = 0;
    add(line, length, "\r");
    add(line, length, s_line.texts[static_cast<std::size_t>(s_line.current)].data());
    add(line, length, "  ");
    add(line, length, {digits.data() + first, digits.size() - first});
    add(line, length, " s\033[K");
    const int former = errno;
    if (::write(STDERR_FILENO, line.data(), length) > 0) s_line.shown = 1;
    errno = former;
}

void setTimer(time_t first, suseconds_t interval) {
    const itimerval timer{{0, interval}, {first, 0}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

bool canTick() { return ::isatty(STDERR_FILENO) == 1 && !onDumbTerminal(); }

std::string shortened(const std::string& text) {
    const std::string line = oneLine(text);
    return line.size() <= kWidest ? line : "..." + line.substr(line.size() - kWidest);
}

}  // namespace

/// Passes everything on; the line of progress goes away before that.
class Ticking::Watched : public std::streambuf {
public:
    explicit Watched(std::ostream& stream) : m_stream(stream), m_target(stream.rdbuf(this)) {}
    ~Watched() override { m_stream.rdbuf(m_target); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

protected:
    int_type overflow(int_type c) override {
        Progress::pause();
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        return m_target->sputc(traits_type::to_char_type(c));
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        Progress::pause();
        return m_target->sputn(text, count);
    }
    int sync() override { return m_target->pubsync(); }

private:
    std::ostream& m_stream;
    std::streambuf* m_target;
};

Ticking::Ticking(const std::string& what, bool wanted) {
    if (!wanted || !canTick()) return;
    m_out = std::make_unique<Watched>(std::cout);
    m_err = std::make_unique<Watched>(std::cerr);
    s_whole = shortened(what);
    s_line.ticks = 0;
    struct sigaction action = {};
    action.sa_handler = onTick;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGALRM, &action, nullptr);
    nowDoing("");
    setTimer(1, kTick);
}

Ticking::~Ticking() {
    if (!m_out) return;
    setTimer(0, 0);
    Progress::pause();
    s_whole.clear();
}

void nowDoing(const std::string& what) {
    if (s_whole.empty()) return;
    const std::string text = s_before + (what.empty() ? s_whole : shortened(what));
    const std::size_t other = 1 - static_cast<std::size_t>(s_line.current);
    std::array<char, 256>& target = s_line.texts.at(other);
    target.fill('\0');
    std::copy_n(text.begin(), std::min(text.size(), target.size() - 1), target.begin());
    s_line.current = static_cast<std::sig_atomic_t>(other);
    s_line.active = 1;
}

Progress::Progress(const std::vector<std::string>& files, bool wanted)
    : m_files(files), m_wanted(wanted && canTick()), m_shown(std::chrono::steady_clock::now()) {}

void Progress::begin(std::size_t number) {
    if (!m_wanted) return;
    // What was printed so far comes out now: the line must not stand within it.
    pause();
    std::cout.flush();
    s_before = std::to_string(number + 1) + " of " + std::to_string(m_files.size()) + "  ";
    s_whole = shortened(m_files[number]);
    nowDoing("");
    const auto now = std::chrono::steady_clock::now();
    if (now - m_shown < kBetween) return;
    m_shown = now;
    const std::string line = "\r" + s_before + s_whole + "\033[K";
    if (::write(STDERR_FILENO, line.data(), line.size()) > 0) s_line.shown = 1;
}

void Progress::end() {
    if (!m_wanted) return;
    pause();
    s_before.clear();
}

void Progress::clear() noexcept {
    if (s_line.shown == 0) return;
    static constexpr std::string_view kClear = "\r\033[K";
    if (::write(STDERR_FILENO, kClear.data(), kClear.size()) > 0) s_line.shown = 0;
}

void Progress::pause() noexcept {
    s_line.active = 0;
    clear();
}

void Progress::leave() noexcept {
    s_line.active = 0;
    s_line.shown = 0;
}

}  // namespace mor::tool
