#pragma once

#include "host/drawing/group.h"
#include "host/dwg/decoders.h"
#include "host/dwg/dwg_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mor::host {

/// One record as groups.
struct DecodedRecord {
    GroupList groups;
    OwnedEntities owned;
    bool known = false;            ///< its own data are read, not only what all records have
    bool exact = false;            ///< its fields take every bit that it has
    std::uint64_t handlesEnd = 0;  ///< where its last handle ends; the object's end when not known
};

/// The type that DXF gives it; "UNKNOWN" where nothing is known of it.
[[nodiscard]] std::string dxfTypeOf(const DwgFile& file, std::uint16_t type);
/// The name of the table whose control object has that type; empty for other types.
[[nodiscard]] std::string tableOfControl(std::uint16_t type);
/// Whether the type's own data are read.
[[nodiscard]] bool isDecoded(const DwgFile& file, std::uint16_t type);

/// What a record's own fields do not say of where it stands.
struct RecordPlace {
    bool paper = false;     ///< in paper space
    unsigned viewport = 0;  ///< which of its layout's viewports it is, from 1
};

/// All groups; of a damaged object only its type and handle.
[[nodiscard]] DecodedRecord decodeRecord(const DwgFile& file, const ObjectFrame& frame,
                                         RecordPlace place = {});

/// What the record of a block says; nothing when there is no such record, or it is damaged.
[[nodiscard]] std::optional<BlockMembers> blockMembersOf(const DwgFile& file, std::uint64_t header,
                                                         BlockParts parts);

/// Adds the groups of the extended data.
void writeExtendedData(GroupWriter& out, const DwgFile& file, const ObjectFrame& frame);
/// The names of the applications of which it has extended data, in their order.
[[nodiscard]] std::vector<std::string> applicationNames(const DwgFile& file,
                                                        const ObjectFrame& frame);
/// Whether it has extended data of that application.
[[nodiscard]] bool hasExtendedData(const DwgFile& file, const ObjectFrame& frame,
                                   std::string_view application);

}  // namespace mor::host
