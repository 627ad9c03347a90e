#pragma once

#include "host/dwg/sections.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mor::host {

/// A type of records that an application has added.
struct DwgClass {
    std::uint16_t number = 0;
    std::uint16_t proxyFlags = 0;
    std::string application;
    std::string cppName;
    std::string dxfName;
    bool wasZombie = false;
    bool entity = false;
    std::int32_t instances = 0;
};

/// In the order of their numbers, without gaps before the first. Nothing when the section is
/// damaged.
[[nodiscard]] std::optional<std::vector<DwgClass>> readClasses(const DwgSections& sections);

}  // namespace mor::host
