#pragma once

#include "host/dwg/fields.h"
#include "host/dwg/object_frame.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mor::host {

class DwgFile;
class GroupWriter;

/// Where an entity says that its owner is.
enum class OwnerMode : std::uint8_t { Stored, PaperSpace, ModelSpace };

/// What every object has: who owns it, who wants to hear of it, what hangs on it.
struct ObjectData {
    std::uint64_t owner = 0;  ///< as stored; of entities only where that is so
    std::vector<std::uint64_t> reactors;
    std::uint64_t dictionary = 0;  ///< of extensions
};

/// Where fields lie that a save may exchange, in bits.
struct FieldPlace {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// What every entity has beside that.
struct EntityData {
    ObjectData object;
    OwnerMode mode = OwnerMode::Stored;
    std::uint64_t previous = 0;  ///< up to R2000, as is the next one
    std::uint64_t next = 0;
    DwgColour colour;
    std::int64_t transparency = -1;  ///< -1 for none
    std::uint64_t colourHandle = 0;
    double lineTypeScale = 1.0;
    unsigned lineTypeKind = 0;  ///< 0 by layer, 1 by block, 2 continuous, 3 by its handle
    unsigned plotStyleKind = 0;
    unsigned materialKind = 0;
    std::uint8_t shadow = 0;
    bool invisible = false;
    std::uint8_t weight = 0;  ///< index in the table of weights
    std::uint64_t layer = 0;
    std::uint64_t lineType = 0;
    std::uint64_t plotStyle = 0;
    std::uint64_t material = 0;
    std::vector<std::uint64_t> visualStyles;
    FieldPlace modePlace;
    FieldPlace noLinksPlace;  ///< up to R2000
    FieldPlace ownerPlace;    ///< empty where none is stored
    FieldPlace linksPlace;    ///< the same
    FieldPlace layerPlace;
};

/// Take what all objects or entities have from the front of their fields.
[[nodiscard]] ObjectData readObjectData(Fields& fields, const ObjectFrame& frame);
[[nodiscard]] EntityData readEntityData(Fields& fields, std::uint64_t own);

/// The entities before and behind one in its list, 0 for none.
struct Neighbours {
    std::uint64_t previous = 0;
    std::uint64_t next = 0;
};
/// Those that an entity names; up to R2000, where lists are chains.
[[nodiscard]] Neighbours neighboursOf(const ObjectFrame& frame, Release release);

/// The owner that is meant.
[[nodiscard]] std::uint64_t ownerOf(const EntityData& data, const DwgFile& file);

/// A line weight in hundredths of a millimetre, or -1, -2, -3, from its index.
[[nodiscard]] int lineWeight(std::uint8_t index);

// As groups, in the order of DXF: owner and hangers-on, then what entities have.
void writeObjectData(GroupWriter& out, const ObjectData& data, std::uint64_t owner);
void writeEntityData(GroupWriter& out, const EntityData& data, const DwgFile& file);
/// A colour: 62, 420 and 430; `code` is that of its number, the others follow it.
void writeColour(GroupWriter& out, const DwgColour& colour, int numberCode, int trueColourCode);
/// Bytes in chunks of 310, the size before them under `sizeCode` when that is not 0.
void writeBytes(GroupWriter& out, std::string_view bytes, int sizeCode, int code);

}  // namespace mor::host
