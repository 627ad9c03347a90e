#pragma once

#include "host/dwg/sections.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// Where an object lies.
struct MapEntry {
    std::uint64_t handle = 0;
    std::uint64_t place = 0;  ///< in `DwgSections::objects`
};

using MapEntries = LargeVector<MapEntry>;

/// The objects of a drawing by their handles.
class ObjectMap {
public:
    /// Answers what is wrong, empty when all is well.
    [[nodiscard]] std::string read(const DwgSections& sections, DamageNotes& damage);

    [[nodiscard]] const MapEntries& entries() const { return m_entries; }
    /// Null when there is none of that handle.
    [[nodiscard]] const MapEntry* find(std::uint64_t handle) const;

private:
    MapEntries m_entries;  ///< by handle
};

}  // namespace mor::host
