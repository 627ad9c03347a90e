#pragma once

#include "host/dxf/dxf_record.h"
#include "host/host.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace mor::host {

struct RecordStyle;

/// One group of a record to be made, its text encoded already.
struct NewGroup {
    int code = 0;
    std::variant<std::int64_t, double, std::string> value;
};

/// What every record of a file needs to know besides its own groups.
struct NewRecord {
    std::string type;
    std::uint64_t handle = 0;  ///< 0: none is written
    std::uint64_t owner = 0;   ///< 0: none is written
    std::vector<NewGroup> groups;
};

[[nodiscard]] std::string groupLine(const LineStyle& lines, const NewGroup& group);

/// A symbol table record; `subclass` is such as "AcDbLayerTableRecord".
[[nodiscard]] std::string makeTableRecord(const RecordStyle& style, const NewRecord& record,
                                          std::string_view subclass);
/// The head of a table that the file lacks, with `count` as its group 70; ENDTAB is the caller's.
[[nodiscard]] std::string makeTableHead(const RecordStyle& style, std::string_view table,
                                        std::uint64_t handle, std::size_t count);

/// Entity types that can be made; others are refused.
[[nodiscard]] bool canMakeEntity(std::string_view type);
/// An entity on `layer`. Missing groups that a file of this release needs are added with defaults.
[[nodiscard]] std::string makeEntity(const RecordStyle& style, const NewRecord& record,
                                     const std::string& layer, bool paper);
[[nodiscard]] std::string makeBlockBegin(const RecordStyle& style, const NewRecord& record,
                                         const std::string& name, std::int64_t flags,
                                         const double* base);
[[nodiscard]] std::string makeBlockEnd(const RecordStyle& style, const NewRecord& record);

}  // namespace mor::host
