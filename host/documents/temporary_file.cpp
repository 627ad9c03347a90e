#include "host/documents/temporary_file.h"

#include "host/host.h"

#include <array>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace mor::host {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kMark = ".moradmin-";

/// What a signal handler may look at: no strings, nothing that moves.
struct Slot {
    volatile std::sig_atomic_t used = 0;
    std::array<char, PATH_MAX> path{};
};
std::array<Slot, 2> s_slots;
std::size_t s_nextSlot = 0;
volatile std::sig_atomic_t s_saved = 0;

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether a save that still runs holds the file.
bool isHeld(const fs::path& path, int held) {
    Descriptor file;
    file.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.valid()) return false;
    struct stat status {};
    struct stat own {};
    // Our own lock on the target is in our way where a backup of it was left.
    const bool ours = held >= 0 && ::fstat(held, &own) == 0 && ::fstat(file.get(), &status) == 0 &&
                      sameFile(own, status);
    return !ours && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

}  // namespace

void removeName(const fs::path& path) {
    static_cast<void>(guarded("unlink", [&] { return ::unlink(path.c_str()); }));
}

fs::path uniqueNameBeside(const fs::path& target) {
    static std::uint32_t s_count = 0;
    std::uint32_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number)
        number = static_cast<std::uint32_t>(::getpid()) * 65599 + ++s_count;
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", number);
    return target.parent_path() /
           ("." + target.filename().string() + std::string(kMark) + digits.data());
}

bool clearLeftNames(const fs::path& target, int held) {
    const std::string start = "." + target.filename().string() + std::string(kMark);
    bool busy = false;
    std::error_code code;  // a folder that cannot be listed keeps what is in it
    for (fs::directory_iterator at(target.parent_path(), code), end; !code && at != end;
         at.increment(code)) {
        if (!at->path().filename().string().starts_with(start)) continue;
        if (isHeld(at->path(), held))
            busy = true;
        else
            removeName(at->path());
    }
    return busy;
}

TemporaryName::TemporaryName() : m_slot(s_nextSlot++ % s_slots.size()) {}

TemporaryName::~TemporaryName() {
    if (m_path.empty()) return;
    ::unlink(m_path.c_str());
    forget();
}

void TemporaryName::set(fs::path path) {
    remove();
    m_path = std::move(path);
    Slot& slot = s_slots[m_slot];
    const std::string& text = m_path.native();
    if (text.size() >= slot.path.size()) return;  // no file can be made under it
    text.copy(slot.path.data(), text.size());
    slot.path[text.size()] = '\0';
    std::atomic_signal_fence(std::memory_order_release);
    slot.used = 1;
}

void TemporaryName::forget() {
    s_slots[m_slot].used = 0;
    m_path.clear();
}

void TemporaryName::remove() {
    if (m_path.empty()) return;
    if (guarded("unlink", [&] { return ::unlink(m_path.c_str()); }) == 0 || errno == ENOENT)
        forget();
}

SignalsHeld::SignalsHeld() {
    sigset_t held{};
    sigemptyset(&held);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&held, signal);
    ::pthread_sigmask(SIG_BLOCK, &held, &m_former);
}

SignalsHeld::~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }

void noteSaved() noexcept { s_saved = 1; }

bool abandonSaves() noexcept {
    if (s_saved != 0) return false;
    for (const Slot& slot : s_slots)
        if (slot.used != 0) ::unlink(slot.path.data());
    return true;
}

}  // namespace mor::host
