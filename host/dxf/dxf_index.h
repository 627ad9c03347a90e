#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/tag_list.h"
#include "host/result.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// A section of the file.
struct Section {
    std::string name;
    RecordNumber head = 0;
    RecordNumber end = 0;
};

/// One DXF text file, cut into records. A record reaches from its group-0 line up to the next one;
/// comments belong to the record that they follow. What stands before the first record belongs to
/// none, nor do blanks behind the last one of a file without EOF.
struct DxfIndex {
    std::shared_ptr<Source> source;
    std::vector<std::uint64_t> places;  ///< offsets of the records; [0] is unused
    std::vector<Section> sections;
    std::uint64_t end = 0;  ///< where the last record ends
    LineStyle lines;
    bool endsWithoutLineEnd = false;  ///< the last record's last line

    [[nodiscard]] RecordNumber lastRecord() const {
        return static_cast<RecordNumber>(places.size() - 1);
    }
    [[nodiscard]] std::uint64_t endOf(RecordNumber number) const {
        return number < lastRecord() ? places[number + 1] : end;
    }
    [[nodiscard]] std::string bytesOf(RecordNumber number) const {
        return source->read(places[number], endOf(number) - places[number]);
    }
    [[nodiscard]] const Section* section(std::string_view name) const;  ///< null: there is none
};

/// What one pass over a file gives; the skeleton without what the header says.
struct Indexed {
    DxfIndex index;
    Skeleton skeleton;
};

/// Reads the source once, in pieces. `name` stands in the errors.
/// Refused: what is no DXF text, line ends of single carriage returns, files that break off inside
/// a section, lines that should be group codes and are not.
Result<Indexed> indexDxf(std::shared_ptr<Source> source, const std::string& name);

}  // namespace mor::host
