#pragma once

#include "host/drawing/codec.h"
#include "host/dwg/dwg_edits.h"
#include "host/dwg/dwg_file.h"

#include <cstdint>
#include <string>
#include <string_view>

/// From changed objects to the bytes of a file.
namespace mor::host {

/// The object map with the new places. New objects lie at `base` one after the other, in the order
/// of their handles.
[[nodiscard]] std::string newObjectMap(const ObjectMap& map, const ObjectChanges& changes,
                                       std::uint64_t base);
/// The new objects one after the other.
[[nodiscard]] std::string newObjects(const ObjectChanges& changes);
/// The section of header variables with another seed.
[[nodiscard]] std::string headerWithSeed(const DwgSections& sections, const DwgHeader& header,
                                         std::uint64_t seed);
/// The auxiliary header with another seed, where it has the old one.
[[nodiscard]] std::string auxiliaryWithSeed(std::string section, std::uint64_t old,
                                            std::uint64_t seed);

/// Adds bytes, or a copy of a stretch of the file, to a plan.
void addBytes(SavePlan& plan, std::string_view bytes);
void addCopy(SavePlan& plan, std::uint64_t from, std::uint64_t size);

// One for each kind of container that is written; what is in the way is told by `refused`.
void planFlat(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan);
void planPaged(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan);

}  // namespace mor::host
