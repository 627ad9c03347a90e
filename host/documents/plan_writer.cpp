#include "host/documents/plan_writer.h"

#include "host/documents/temporary_file.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kBufferSize = 1 << 20;
constexpr std::uint64_t kStretch = 4 << 20;

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t done = guarded("write", [&] { return ::write(descriptor, bytes, size); });
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        bytes += done;
        size -= static_cast<std::size_t>(done);
    }
    return true;
}

/// Writes to a file from its start to its end.
class Writer {
public:
    Writer(const Source& source, int target, WriteProgress& progress)
        : m_source(source), m_target(target), m_progress(progress) {}

    bool copy(std::uint64_t from, std::uint64_t size);
    bool write(const std::string& bytes) {
        if (!writeAll(m_target, bytes.data(), bytes.size())) return false;
        wrote(bytes.size());
        return true;
    }

private:
    void wrote(std::uint64_t size) {
        m_at += size;
        if (!m_reads) m_progress.reach(m_at);
    }
    bool copyThroughBuffer(std::uint64_t from, std::uint64_t size);

    const Source& m_source;
    int m_target;
    WriteProgress& m_progress;
    std::uint64_t m_at = 0;
    bool m_reads = false;  // the source; who reads behind may do so too
};

/// Copies within the kernel where that works, else through a buffer.
bool Writer::copy(std::uint64_t from, std::uint64_t size) {
    auto offset = static_cast<off_t>(from);
    while (size > 0 && m_source.descriptor() >= 0) {
        const auto stretch = static_cast<std::size_t>(std::min(size, kStretch));
        const ssize_t done = guarded("copy_file_range", [&] {
            return ::copy_file_range(m_source.descriptor(), &offset, m_target, nullptr, stretch, 0);
        });
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) break;
        // The disk may begin while the rest is copied; the flush waits for less then. Not tested:
        // it is no more than a hint.
        static_cast<void>(
            ::sync_file_range(m_target, static_cast<off_t>(m_at), done, SYNC_FILE_RANGE_WRITE));
        size -= static_cast<std::uint64_t>(done);
        wrote(static_cast<std::uint64_t>(done));
    }
    return copyThroughBuffer(m_source.descriptor() >= 0 ? static_cast<std::uint64_t>(offset) : from,
                             size);
}

bool Writer::copyThroughBuffer(std::uint64_t from, std::uint64_t size) {
    m_reads = m_reads || size > 0;
    std::vector<char> buffer(size > 0 ? kBufferSize : 0);
    while (size > 0) {
        const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer.size()));
        const std::size_t got = m_source.read(from, buffer.data(), want);
        if (got == 0) {
            errno = EIO;
            return false;
        }
        if (!writeAll(m_target, buffer.data(), got)) return false;
        from += got;
        size -= got;
        wrote(got);
    }
    return true;
}

}  // namespace

void WriteProgress::reach(std::uint64_t bytes) {
    const std::scoped_lock lock(m_mutex);
    m_bytes = bytes;
    m_changed.notify_one();
}

void WriteProgress::end() {
    const std::scoped_lock lock(m_mutex);
    m_ended = true;
    m_changed.notify_one();
}

void WriteProgress::waitFor(std::uint64_t bytes) const {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_ended || m_bytes >= bytes; });
}

bool writePlan(const SavePlan& plan, const Source& source, int target, WriteProgress& progress) {
    Writer writer(source, target, progress);
    return std::ranges::all_of(plan.pieces, [&](const PlanPiece& piece) {
        return piece.copy ? writer.copy(piece.from, piece.size) : writer.write(piece.bytes);
    });
}

bool writeCopy(const Source& source, int target) {
    WriteProgress nobody;
    return Writer(source, target, nobody).copy(0, source.size());
}

}  // namespace mor::host
