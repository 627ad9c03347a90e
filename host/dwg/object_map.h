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

/// The objects of a drawing by their handles.
class ObjectMap {
public:
    /// Answers what is wrong, empty when all is well.
    [[nodiscard]] std::string read(const DwgSections& sections, DamageNotes& damage);

    [[nodiscard]] const std::vector<MapEntry>& entries() const { return m_entries; }
    /// Null when there is none of that handle.
    [[nodiscard]] const MapEntry* find(std::uint64_t handle) const;

private:
    std::vector<MapEntry> m_entries;  ///< by handle
};

}  // namespace mor::host
