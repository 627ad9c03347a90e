#pragma once

#include "host/drawing/group.h"
#include "host/host.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Records that a drawing gets, with the groups that its release wants.
namespace mor::host {

/// How new records of a drawing look; markers and owners depend on their type.
struct RecordStyle {
    Release release = Release::R12;
    bool markers = false;  ///< group 100
    bool owners = false;   ///< group 330
};

/// What every record of a file needs to know besides its own groups.
struct NewRecord {
    std::string type;
    std::uint64_t handle = 0;  ///< 0: none is written
    std::uint64_t owner = 0;   ///< 0: none is written
    std::vector<NewGroup> groups;
};

/// A symbol table record; `subclass` is such as "AcDbLayerTableRecord".
[[nodiscard]] GroupList makeTableRecord(const RecordStyle& style, const NewRecord& wanted,
                                        std::string_view subclass);
/// The head of a table that the file lacks, with `count` as its group 70.
[[nodiscard]] GroupList makeTableHead(const RecordStyle& style, std::string_view table,
                                      std::uint64_t handle, std::size_t count);

/// Entity types that can be made; others are refused.
[[nodiscard]] bool canMakeEntity(std::string_view type);
/// An entity on `layer`. Missing groups that a file of this release needs are added with defaults.
[[nodiscard]] GroupList makeEntity(const RecordStyle& style, const NewRecord& wanted,
                                   const std::string& layer, bool paper);
[[nodiscard]] GroupList makeBlockBegin(const RecordStyle& style, const NewRecord& wanted,
                                       const std::string& name, std::int64_t flags,
                                       const double* base);
[[nodiscard]] GroupList makeBlockEnd(const RecordStyle& style, const NewRecord& wanted);

}  // namespace mor::host
