#pragma once

#include "host/result.h"
#include "host/saving.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace mor::host {

/// The state of an open file; of none when it cannot be told.
[[nodiscard]] FileState stateOf(int descriptor);
[[nodiscard]] FileState stateOf(const struct ::stat& status);

/// The bytes of a drawing: an open file or a buffer. Reads anywhere; does not change.
class Source {
public:
    virtual ~Source() = default;
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    /// Reads up to `count` bytes at `offset`; fewer at the end, also where another program has put
    /// it, and while an exception is on its way. Throws ReadFailure when reading fails.
    virtual std::size_t read(std::uint64_t offset, char* buffer, std::size_t count) const = 0;
    /// The open file, -1 for a buffer.
    [[nodiscard]] virtual int descriptor() const { return -1; }
    /// Whether a reading has failed or met the end too early: what was learnt of the drawing since
    /// then may be wrong.
    [[nodiscard]] virtual bool failed() const { return false; }

    [[nodiscard]] std::string read(std::uint64_t offset, std::uint64_t count) const;
};

/// Notes the failure for `takeReadFailure` and throws it as ReadFailure, unless an exception is on
/// its way.
void failReading(const Error& error);

/// Whether both have the same bytes there.
[[nodiscard]] bool sameBytes(const Source& a, std::uint64_t aOffset, const Source& b,
                             std::uint64_t bOffset, std::uint64_t count);

/// Opens a regular file for reading; it stays open as long as the source lives.
Result<std::shared_ptr<Source>> openFileSource(const std::filesystem::path& path);
[[nodiscard]] std::shared_ptr<Source> makeBufferSource(std::string bytes);

}  // namespace mor::host
