#pragma once

#include "host/large_memory.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mor::host {

/// Numbers a record of one drawing, from 1: those of the file in file order, then the made ones. 0
/// is none.
using RecordNumber = std::uint32_t;

/// Numbers a container of one drawing. The first three always exist.
using ContainerNumber = std::uint32_t;
inline constexpr ContainerNumber kNoContainer = 0;
inline constexpr ContainerNumber kModelSpace = 1;
inline constexpr ContainerNumber kPaperSpace = 2;  ///< the active layout

/// Flags of an entry.
enum RecordFlag : std::uint16_t {
    kEdge = 1,          ///< opens or closes a container: SECTION, TABLE, BLOCK and their ends, EOF
    kSubEntity = 2,     ///< ATTRIB, VERTEX or SEQEND behind its owner
    kErased = 4,        ///< erased; can be restored
    kGone = 8,          ///< ended for good by the redefinition of its block
    kMade = 16,         ///< not from the file
    kMovedOut = 32,     ///< left its container for another one
    kNoHandles = 64,    ///< of a kind that carries no handle
    kAttributed = 128,  ///< holds named attributes, as loaded
    kOpaque = 256,      ///< its own data are not read, only what all records have
    kExtended = 512     ///< has extended data of any application, as loaded
};

/// What is kept of each record; where it lies is known to the codec.
struct RecordEntry {
    std::uint64_t handle = 0;  ///< 0 for none
    ContainerNumber container = kNoContainer;
    std::uint16_t type = 0;  ///< number of its group-0 text
    std::uint16_t flags = 0;

    [[nodiscard]] bool has(std::uint16_t flag) const noexcept { return (flags & flag) != 0; }
};
static_assert(sizeof(RecordEntry) <= 16);
using RecordEntries = LargeVector<RecordEntry>;

enum class ContainerKind { None, Section, Table, Block, Space };

/// An ordered list of records: a table, a block definition, a space, or a section with records of
/// its own.
struct Container {
    ContainerKind kind = ContainerKind::None;
    std::string name;                 ///< as the file has it, undecoded
    RecordNumber head = 0;            ///< TABLE, BLOCK or SECTION record; 0 when there is none
    RecordNumber end = 0;             ///< the closing record; 0 when there is none
    RecordNumber first = 0;           ///< range of the file's records among which its members lie
    RecordNumber last = 0;            ///< `last` < `first`: none
    std::uint64_t owner = 0;          ///< handle of a table; of the BLOCK_RECORD that a BLOCK names
    bool layout = false;              ///< a block that stands for model space or a layout
    bool paper = false;               ///< a layout other than model space
    std::vector<RecordNumber> added;  ///< made or moved here, in order; behind the file's members
};

}  // namespace mor::host
