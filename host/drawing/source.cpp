#include "host/drawing/source.h"

#include "host/faults.h"
#include "host/permanent.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

/// More than one thread may read.
struct FirstFailure {
    std::mutex mutex;
    std::optional<Error> error;

    void note(const Error& failure) {
        const std::lock_guard lock(mutex);
        if (!error) error = failure;
    }
    std::optional<Error> take() {
        const std::lock_guard lock(mutex);
        return std::exchange(error, std::nullopt);
    }
};

FirstFailure& firstFailure() {
    static Permanent<FirstFailure> failure;
    return *failure;
}

class FileSource final : public Source {
public:
    FileSource(int descriptor, std::uint64_t size, std::string name)
        : m_descriptor(descriptor), m_size(size), m_name(std::move(name)) {}
    ~FileSource() override { ::close(m_descriptor); }
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    [[nodiscard]] int descriptor() const override { return m_descriptor; }
    [[nodiscard]] bool failed() const override { return m_failed; }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t count) const override {
        std::size_t done = 0;
        while (done < count) {
            const ssize_t got = readAt(offset + done, buffer + done, count - done);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) {
                if (got < 0 || offset + done < m_size) fail(got < 0 ? errno : 0);
                break;
            }
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

private:
    ssize_t readAt(std::uint64_t offset, char* buffer, std::size_t count) const {
        if (faults::readFails()) {
            errno = EIO;
            return -1;
        }
        return ::pread(m_descriptor, buffer, count, static_cast<off_t>(offset));
    }
    /// `code` 0: the file ends before its end.
    void fail(int code) const {
        m_failed = true;
        const Error error{ErrorKind::Unreadable, m_name, 0,
                          code == 0
                              ? std::string("was cut short by another program while it was open")
                              : std::string("reading failed: ") + std::strerror(code)};
        if (code != 0) return failReading(error);
        firstFailure().note(error);
    }

    int m_descriptor;
    std::uint64_t m_size;
    std::string m_name;
    mutable std::atomic<bool> m_failed = false;
};

class BufferSource final : public Source {
public:
    explicit BufferSource(std::string bytes) : m_bytes(std::move(bytes)) {}
    [[nodiscard]] std::uint64_t size() const override { return m_bytes.size(); }
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t count) const override {
        if (offset >= m_bytes.size()) return 0;
        return m_bytes.copy(buffer, count, static_cast<std::size_t>(offset));
    }

private:
    std::string m_bytes;
};

Error openError(const std::filesystem::path& path, int code) {
    return {ErrorKind::Unreadable, path.string(), 0, std::strerror(code)};
}

}  // namespace

FileState stateOf(const struct stat& status) {
    return {true,
            static_cast<std::uint64_t>(status.st_dev),
            static_cast<std::uint64_t>(status.st_ino),
            static_cast<std::uint64_t>(status.st_size),
            status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

FileState stateOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? stateOf(status) : FileState();
}

void failReading(const Error& error) {
    firstFailure().note(error);
    if (std::uncaught_exceptions() == 0) throw ReadFailure(error);
}

std::optional<Error> takeReadFailure() { return firstFailure().take(); }

std::string Source::read(std::uint64_t offset, std::uint64_t count) const {
    std::string bytes(static_cast<std::size_t>(count), '\0');
    bytes.resize(read(offset, bytes.data(), bytes.size()));
    return bytes;
}

Result<std::shared_ptr<Source>> openFileSource(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return openError(path, errno);
    struct stat status {};
    const bool known = ::fstat(descriptor, &status) == 0;
    if (!known || !S_ISREG(status.st_mode)) {
        const int code = errno;
        ::close(descriptor);
        if (!known) return openError(path, code);
        return Error{ErrorKind::Unreadable, path.string(), 0,
                     S_ISDIR(status.st_mode)
                         ? "is a directory, not a drawing"
                         : "is no regular file; save the drawing to disk first"};
    }
    return std::shared_ptr<Source>(std::make_shared<FileSource>(
        descriptor, static_cast<std::uint64_t>(status.st_size), path.string()));
}

std::shared_ptr<Source> makeBufferSource(std::string bytes) {
    return std::make_shared<BufferSource>(std::move(bytes));
}

bool sameBytes(const Source& a, std::uint64_t aOffset, const Source& b, std::uint64_t bOffset,
               std::uint64_t count) {
    constexpr std::size_t kStretch = std::size_t{256} * 1024;
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(count, kStretch));
    std::vector<char> left(size);
    std::vector<char> right(size);
    for (std::uint64_t done = 0; done < count; done += size) {
        const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(count - done, size));
        if (a.read(aOffset + done, left.data(), want) != want ||
            b.read(bOffset + done, right.data(), want) != want ||
            std::memcmp(left.data(), right.data(), want) != 0)
            return false;
    }
    return true;
}

}  // namespace mor::host
