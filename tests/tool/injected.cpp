#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

/// Preloaded into the program. At the INJECT_AT-th call (0: at every one) of INJECT_CALL it does
/// what INJECT_DO says: "fail" the call, "signal:NUMBER" to itself, or as another program would
/// "append:FILE" or "replace:FILE".
namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Whether the call is to fail.
bool strikes(std::string_view call) {
    static long calls = 0;
    if (variable("INJECT_CALL") != call) return false;
    const long wanted = std::strtol(variable("INJECT_AT").c_str(), nullptr, 10);
    if (wanted != 0 && ++calls != wanted) return false;
    const std::string what = variable("INJECT_DO");
    const std::string argument = what.substr(what.find(':') + 1);
    if (what.starts_with("signal:"))
        ::raise(static_cast<int>(std::strtol(argument.c_str(), nullptr, 10)));
    if (what.starts_with("append:")) std::ofstream(argument, std::ios::app) << "appended\n";
    if (what.starts_with("replace:")) {
        std::ofstream(argument + ".other") << "replaced\n";
        std::rename((argument + ".other").c_str(), argument.c_str());
    }
    errno = call == "renameat2" ? EINVAL : EIO;
    return what == "fail";
}

}  // namespace

extern "C" ssize_t pread(int file, void* buffer, std::size_t count, off_t offset) {
    return strikes("pread") ? -1 : ::syscall(SYS_pread64, file, buffer, count, offset);
}
extern "C" ssize_t pread64(int file, void* buffer, std::size_t count, off_t offset) {
    return ::pread(file, buffer, count, offset);
}
extern "C" int fsync(int file) {
    return strikes("fsync") ? -1 : static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" int rename(const char* from, const char* to) noexcept {
    return strikes("rename") ? -1 : static_cast<int>(::syscall(SYS_rename, from, to));
}
extern "C" int renameat2(int folder, const char* from, int target, const char* to,
                         unsigned flags) noexcept {
    if (strikes("renameat2")) return -1;
    return static_cast<int>(::syscall(SYS_renameat2, folder, from, target, to, flags));
}
