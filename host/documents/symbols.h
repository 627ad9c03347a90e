#pragma once

#include "host/documents/located.h"

#include <array>
#include <cstddef>
#include <string_view>

/// Blocks and symbols as a document knows them, its references' included.
namespace mor::host {

// What a block shows; `owner` is null for blocks of the document's own drawing.

/// The block that a look-up of the name finds. A dependent block is the referenced drawing's, also
/// where the document's own drawing holds a record under its qualified name; once the reference is
/// loaded, what the drawing keeps of a block that it no longer has is not found. No block when
/// there is none.
struct FoundBlock {
    Mount* owner = nullptr;
    ContainerNumber block = kNoContainer;
};
[[nodiscard]] FoundBlock resolveBlock(AcApDocument& document, std::wstring_view name);
/// Where the entities of a block stand: a reference's in model space of the referenced drawing,
/// those of a layout in its space. The number is the container; a reference that is not loaded has
/// no drawing.
struct BlockEntities {
    Drawing* drawing = nullptr;
    Mount* mount = nullptr;
    ContainerNumber container = kNoContainer;
};
[[nodiscard]] BlockEntities entitiesOf(AcApDocument& document, Mount* owner, ContainerNumber block);
[[nodiscard]] Located firstEntityOf(AcApDocument& document, Mount* owner, ContainerNumber block);
/// The base point: a loaded reference's is the insertion base of its drawing, where it has one.
[[nodiscard]] std::array<double, 3> baseOf(AcApDocument& document, Mount* owner,
                                           ContainerNumber block);
/// The base point that its BLOCK record has.
[[nodiscard]] std::array<double, 3> recordedBase(Drawing& drawing, ContainerNumber block);
/// What its definition holds or its flag says. A reference's entities are none of the block's.
[[nodiscard]] bool holdsAttributeDefinitions(Drawing& drawing, ContainerNumber block);
/// By its flag, or by a name that programs give, as *U12.
[[nodiscard]] bool isAnonymousBlock(Drawing& drawing, ContainerNumber block);

/// Live main entities.
[[nodiscard]] std::size_t countEntities(const Drawing& drawing, ContainerNumber container);

/// The record of a symbol table that a look-up of the name finds: the document's own, else, for a
/// qualified name, that of the referenced drawing.
[[nodiscard]] Located resolveSymbol(AcApDocument& document, std::string_view table,
                                    std::wstring_view name);

}  // namespace mor::host
