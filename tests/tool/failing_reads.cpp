#include <cerrno>
#include <cstdlib>
#include <sys/syscall.h>
#include <unistd.h>

/// Preloaded into the program: its n-th positioned reading fails, n being what FAILING_READ says.
namespace {

ssize_t readOrFail(int descriptor, void* buffer, std::size_t count, off_t offset) {
    static long left = std::getenv("FAILING_READ") == nullptr
                           ? 0
                           : std::strtol(std::getenv("FAILING_READ"), nullptr, 10);
    if (left == 0 || --left != 0) return ::syscall(SYS_pread64, descriptor, buffer, count, offset);
    errno = EIO;
    return -1;
}

}  // namespace

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t count, off_t offset) {
    return readOrFail(descriptor, buffer, count, offset);
}
extern "C" ssize_t pread64(int descriptor, void* buffer, std::size_t count, off_t offset) {
    return readOrFail(descriptor, buffer, count, offset);
}
