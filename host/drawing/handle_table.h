#pragma once

#include "host/drawing/record.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace mor::host {

/// Which record has which handle, and which handles are free. Made when it is first asked.
class HandleTable {
public:
    /// Handles from `from` on that values in the file keep.
    using KeptHandles = std::function<std::vector<std::uint64_t>(std::uint64_t from)>;

    /// `records` are the drawing's, which grow; those up to `lastFileRecord` are the file's. `next`
    /// is the first handle that may be free, 0 when there is none.
    HandleTable(const RecordEntries& records, RecordNumber lastFileRecord, std::uint64_t next,
                KeptHandles kept);

    /// 0 when no record has the handle, or the one that had it ended with a redefinition. The first
    /// record of the file keeps a handle that stands twice.
    [[nodiscard]] RecordNumber find(std::uint64_t handle) const;
    /// Handles that several records of the file carry, and how many.
    [[nodiscard]] const std::vector<std::pair<std::uint64_t, std::size_t>>& doubled() const;

    /// The next handle that a new record may get; 0 when there is none left. Stays clear of those
    /// that values keep although no record has them: such a value must not come to name a foreign
    /// record.
    [[nodiscard]] std::uint64_t next() const;
    [[nodiscard]] std::uint64_t take();  ///< 0 when there is none left
    [[nodiscard]] bool gaveHandles() const { return m_gaveHandles; }

    /// Notes that a made record, or one that had none, has that handle.
    void note(std::uint64_t handle, RecordNumber number);
    /// Notes a record's new handle; its old one now means the next record that carries it. Call it
    /// before the entry changes.
    void exchange(std::uint64_t handle, RecordNumber number);

    /// A number below 0 that stands for a handle which no record has, always the same one.
    [[nodiscard]] std::int64_t reservedFor(std::uint64_t handle) const;
    [[nodiscard]] std::uint64_t handleOfReserved(std::int64_t reserved) const;  ///< 0: none

private:
    void build() const;
    void buildSorted() const;
    /// The first record of the file that carries the handle; 0 when there is none.
    [[nodiscard]] RecordNumber inFile(std::uint64_t handle) const;
    void setInFile(std::uint64_t handle, RecordNumber number);

    const RecordEntries& m_records;
    RecordNumber m_lastFileRecord;
    KeptHandles m_kept;
    bool m_gaveHandles = false;
    std::map<std::uint64_t, RecordNumber> m_made;
    mutable std::uint64_t m_next;
    mutable bool m_built = false;
    // The first record with each handle: by handle where they lie close together, else sorted.
    mutable std::vector<RecordNumber> m_dense;
    mutable std::vector<std::pair<std::uint64_t, RecordNumber>> m_sorted;
    mutable std::vector<std::pair<std::uint64_t, std::size_t>> m_doubled;
    mutable std::optional<std::vector<std::uint64_t>> m_keptHandles;  ///< sorted
    mutable std::map<std::uint64_t, std::int64_t> m_reserved;
};

}  // namespace mor::host
