#pragma once

#include "host/documents.h"
#include "host/dwg/fields.h"
#include "host/dwg/sections.h"

#include <cstdint>
#include <optional>

namespace mor::host {

/// The header variables that are needed. Handles are 0 where there is none.
struct DwgHeader {
    std::uint64_t seed = 0;
    std::uint64_t seedBegin = 0;  ///< bits of $HANDSEED in the section's data
    std::uint64_t seedEnd = 0;
    std::uint64_t currentLayer = 0;
    Point3 insertionBase{};
    Point3 paperInsertionBase{};
    bool tileMode = false;
    std::int16_t insertionUnits = 0;
    DrawingSettings settings;  ///< but for the units
    // Control objects of the tables.
    std::uint64_t blocks = 0;
    std::uint64_t layers = 0;
    std::uint64_t styles = 0;
    std::uint64_t lineTypes = 0;
    std::uint64_t views = 0;
    std::uint64_t coordinateSystems = 0;
    std::uint64_t viewports = 0;
    std::uint64_t applications = 0;
    std::uint64_t dimensionStyles = 0;
    std::uint64_t viewportEntities = 0;  ///< up to R2000
    // Others.
    std::uint64_t dictionary = 0;  ///< of named objects
    std::uint64_t layouts = 0;
    std::uint64_t materials = 0;
    std::uint64_t paperSpace = 0;  ///< block record of the active layout
    std::uint64_t modelSpace = 0;
    std::uint64_t byLayer = 0;
    std::uint64_t byBlock = 0;
    std::uint64_t continuous = 0;
};

/// Nothing when the section is damaged or does not say where the tables are.
[[nodiscard]] std::optional<DwgHeader> readHeaderVariables(const DwgSections& sections);

}  // namespace mor::host
