#pragma once

#include "host/host.h"
#include "tools/moradmin/session.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::tool {

/// One variable of a drawing's header: $INSUNITS, and its groups.
struct HeaderVariable {
    std::string name;
    std::vector<host::RecordGroup> groups;
};
/// All of a DXF; of a DWG those that are decoded.
[[nodiscard]] std::vector<HeaderVariable> headerVariables(const AcApDocument* document);
/// The groups' values with blanks between them.
[[nodiscard]] std::string valuesText(const std::vector<host::RecordGroup>& groups);
/// The same as JSON: a number or text, or an array of several.
[[nodiscard]] Json valuesJson(const std::vector<host::RecordGroup>& groups);
/// A group as JSON: its code, and its value as a number where its kind holds numbers.
[[nodiscard]] Json groupJson(const host::RecordGroup& group);

/// The extended data of a record, by application in the order of the record.
struct ExtendedData {
    std::string application;
    std::vector<host::RecordGroup> groups;
};
[[nodiscard]] std::vector<ExtendedData> extendedData(const std::vector<host::RecordGroup>& groups);

/// One entry of a dictionary.
struct DictionaryEntry {
    std::string name;
    std::string handle;
    std::string type;  ///< of the object; empty when there is none
    mor::EntityName object;
};
/// The root dictionary; none in drawings of old releases.
[[nodiscard]] mor::EntityName rootDictionary(const AcApDocument* document);
[[nodiscard]] std::vector<DictionaryEntry> dictionaryEntries(const AcApDocument* document,
                                                             mor::EntityName dictionary);

}  // namespace mor::tool
