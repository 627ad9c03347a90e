#pragma once

#include "host/drawing/codec.h"
#include "host/drawing/source.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace mor::host {

/// How far a file has been written, for a thread that reads behind.
class WriteProgress {
public:
    void reach(std::uint64_t bytes);
    void end();  ///< nothing more will be written
    /// Returns when so many bytes are written, or nothing more will be.
    void waitFor(std::uint64_t bytes) const;

    /// Ends it, however its own scope is left.
    class Ending {
    public:
        explicit Ending(WriteProgress& progress) : m_progress(progress) {}
        ~Ending() { m_progress.end(); }
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;

    private:
        WriteProgress& m_progress;
    };

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::uint64_t m_bytes = 0;
    bool m_ended = false;
};

/// A file that is being written, as it will be once it has `size` bytes: a reader waits for what is
/// missing.
class FollowingSource final : public Source {
public:
    FollowingSource(const Source& file, std::uint64_t size, const WriteProgress& progress)
        : m_file(file), m_size(size), m_progress(progress) {}

    [[nodiscard]] std::uint64_t size() const override { return m_size; }
    using Source::read;
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t count) const override {
        m_progress.waitFor(std::min<std::uint64_t>(offset + count, m_size));
        return m_file.read(offset, buffer, count);
    }

private:
    const Source& m_file;
    std::uint64_t m_size;
    const WriteProgress& m_progress;
};

/// Writes what the plan says, at the end of `target`. Copies within the kernel where that works,
/// and lets the disk begin with each stretch. False, and `errno`, when it fails. As long as the
/// source itself has to be read, nothing is told of the progress.
[[nodiscard]] bool writePlan(const SavePlan& plan, const Source& source, int target,
                             WriteProgress& progress);

/// Writes a copy of the whole source.
[[nodiscard]] bool writeCopy(const Source& source, int target);

}  // namespace mor::host
