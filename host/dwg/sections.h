#pragma once

#include "host/documents.h"
#include "host/drawing/source.h"
#include "host/large_memory.h"
#include "host/result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// From the bytes of a DWG file to what its sections hold, unpacked and with every sum tested.
namespace mor::host {

/// Damage that does not keep the rest from being read.
struct DamageNotes {
    std::size_t count = 0;
    std::string first;
    std::uint64_t offset = 0;  ///< of the first, in the file or among the objects

    void note(const std::string& text, std::uint64_t at);
};

/// What the first bytes say.
struct DwgStart {
    Release release = Release::R2000;
    std::string version;       ///< "AC1015"
    unsigned maintenance = 0;  ///< of the program that saved; decides about a field here and there
    unsigned codePage = 0;     ///< number of the code page
    bool isSigned = false;     ///< a change would break its signature
};

/// The sections that are read.
struct DwgSections {
    DwgStart start;
    LargeBytes objects;  ///< places of objects count in it; up to R2000 it is the whole file
    LargeBytes map;
    LargeBytes header;
    LargeBytes classes;
    bool metric = false;  ///< $MEASUREMENT
    DamageNotes damage;

    /// Whether sizes of header variables and classes have eight bytes.
    [[nodiscard]] bool hasHighSizes() const;
};

/// Whether the bytes begin like a DWG file of any release.
[[nodiscard]] bool looksLikeDwg(std::string_view start);

/// Errors: releases that are not read, protected drawings, damage outside of the objects.
Result<DwgSections> readSections(const Source& source, const std::string& file);

/// The data between two marks of a section, its sum tested. The second mark is the first one with
/// every bit turned. `hasHighSize`: the size has eight bytes.
/// Nothing when the marks, the size or the sum are wrong.
[[nodiscard]] std::optional<std::string_view> markedData(std::string_view section,
                                                         std::string_view mark, bool hasHighSize);

// One of these for each kind of container; `sections.start` is filled in. They answer what is
// wrong, empty when all is well.
[[nodiscard]] std::string readFlat(const Source& source, DwgSections& sections);
[[nodiscard]] std::string readPaged(const Source& source, DwgSections& sections);
[[nodiscard]] std::string readPaged2007(const Source& source, DwgSections& sections);

}  // namespace mor::host
