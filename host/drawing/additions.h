#pragma once

#include "host/drawing/drawing.h"

#include <cstdint>
#include <string_view>

/// What a drawing gets besides entities: layers, blocks, applications, and the tables they stand
/// in.
namespace mor::host {

/// A layer with the defaults of the drawing's layer 0, thawed, unlocked, white. There must be none
/// of that name.
RecordNumber addLayer(Drawing& drawing, std::wstring_view name);

/// Registers an application unless it is.
void registerApplication(Drawing& drawing, std::string_view name);

/// A block with its BLOCK record; entities and `endBlock` are the caller's. There must be none of
/// that name.
ContainerNumber addBlock(Drawing& drawing, std::wstring_view name, std::int64_t flags,
                         const double* base);
/// Ends the entities of a definition for good and gives it other flags and another base point.
void redefineBlock(Drawing& drawing, ContainerNumber block, std::int64_t flags, const double* base);
/// Adds the ENDBLK of a new block; nothing when there is one.
void endBlock(Drawing& drawing, ContainerNumber block);

}  // namespace mor::host
