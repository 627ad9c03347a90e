#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/form.h"
#include "host/result.h"
#include "host/text/text_numbers.h"

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

/// One DXF file, cut into records. A record reaches from its group 0 up to the next one; comments
/// belong to the record that they follow. What stands before the first record belongs to none, nor
/// do blanks behind the last one of a file without EOF, nor what is not read of a damaged file.
struct DxfIndex {
    std::shared_ptr<Source> source;
    DxfForm form;
    LargeVector<std::uint64_t> places;  ///< offsets of the records; [0] is unused
    LargeVector<std::uint16_t> layers;  ///< numbers of the texts of their groups 8
    TextNumbers layerTexts;
    std::vector<Section> sections;
    std::uint64_t end = 0;            ///< where the last record ends
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

/// Which way a text file is looked through. Both find the same.
enum class Scan { Vectorised, LineByLine };

/// Reads the source once, in pieces. `name` stands in the errors.
/// A file that breaks off, or has a line that should be a group code and is none, is read up to
/// there: the skeleton then has the damage, and the record in which it lies is none of the index.
/// Refused: what is no DXF.
Result<Indexed> indexDxf(const std::shared_ptr<Source>& source, const std::string& name);

}  // namespace mor::host
