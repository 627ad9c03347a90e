#pragma once

#include "host/drawing/record.h"
#include "host/drawing/source.h"
#include "host/drawing/type_names.h"
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

/// Whether records of one type or kind have subclass markers (group 100).
struct RecordForm {
    bool plain = false;
    bool marked = false;

    [[nodiscard]] bool seen() const { return plain || marked; }
    void note(bool marker) { (marker ? marked : plain) = true; }
};

/// One DXF text file, cut into records. A record reaches from its group-0 line up to the next one;
/// comments belong to the record that they follow. What stands before the first record belongs to
/// none, nor do blanks behind the last one of a file without EOF.
struct DxfIndex {
    std::shared_ptr<Source> source;
    std::vector<RecordEntry> records;  ///< [0] is unused; `place` is the offset in the source
    std::vector<Container> containers;
    std::vector<Section> sections;
    TypeNames types;
    std::uint64_t end = 0;          ///< where the last record ends
    bool crlf = false;              ///< line end of the first line
    std::vector<RecordForm> forms;  ///< by type
    RecordForm tableForm;           ///< of the records of tables
    RecordForm entityForm;          ///< of entities, those of blocks included
    bool sawOwners = false;         ///< an entity or table record has its owner in 330
    bool sawEof = false;
    bool endsWithoutLineEnd = false;  ///< the last record's last line
    std::uint64_t highestHandle = 0;

    [[nodiscard]] RecordNumber lastRecord() const {
        return static_cast<RecordNumber>(records.size() - 1);
    }
    [[nodiscard]] std::uint64_t endOf(RecordNumber number) const {
        return number < lastRecord() ? records[number + 1].place : end;
    }
    [[nodiscard]] std::string bytesOf(RecordNumber number) const {
        return source->read(records[number].place, endOf(number) - records[number].place);
    }
    [[nodiscard]] const Section* section(std::string_view name) const;
    /// Of the type's records in tables, blocks and entities. Objects always have markers, also
    /// those that some writers add to R12 files.
    [[nodiscard]] RecordForm formOf(std::uint16_t type) const {
        return type < forms.size() ? forms[type] : RecordForm{};
    }
};

/// Reads the source once, in pieces. `name` stands in the errors.
/// Refused: what is no DXF text, line ends of single carriage returns, files that break off inside
/// a section, lines that should be group codes and are not.
Result<std::unique_ptr<DxfIndex>> indexDxf(std::shared_ptr<Source> source, const std::string& name);

}  // namespace mor::host
