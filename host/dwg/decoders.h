#pragma once

#include "host/dwg/dwg_file.h"
#include "host/dwg/fields.h"
#include "host/dwg/group_writer.h"

#include <array>
#include <cstdint>
#include <vector>

/// From the fields of a record's own data to its groups. One decoder for each type; each takes all
/// fields of its type, so that what is left over tells a fault.
namespace mor::host {

/// Sub-entities of an entity, in its order.
struct OwnedEntities {
    std::vector<std::uint64_t> handles;  ///< of a chain the first and the last
    bool chain = false;                  ///< each one tells the next; up to R2000
    std::uint64_t end = 0;               ///< SEQEND
};

/// How much of a block's record is asked for: its fields, also its lists of entities, also where
/// each of these stands.
enum class BlockParts : std::uint8_t { Fields, Lists, Places };

/// What a decoder works with.
struct RecordReader {
    const DwgFile& file;
    Fields& in;
    GroupWriter& out;
    std::uint64_t own = 0;    ///< handle
    std::uint64_t owner = 0;  ///< handle
    std::uint16_t type = 0;
    OwnedEntities owned = {};
    unsigned viewport = 0;  ///< which of its layout's viewports it is
    BlockParts parts = BlockParts::Lists;

    [[nodiscard]] bool since(Release release) const { return in.since(release); }
    [[nodiscard]] bool upTo(Release release) const { return in.upTo(release); }
    std::uint64_t handle() { return in.handleIn(own); }
    std::vector<std::uint64_t> handles(std::uint32_t count);
    /// The sub-entities at this place among the handles; `count` from R2004 on.
    void takeOwned(std::uint32_t count);
    /// The name of the record with that handle.
    void name(int code, std::uint64_t handle) { out.text(code, file.nameOf(handle)); }
};

using Decode = void (*)(RecordReader& record);

// Simple entities.
void decodeLine(RecordReader& record);
void decodePoint(RecordReader& record);
void decodeCircle(RecordReader& record);
void decodeArc(RecordReader& record);
void decodeEllipse(RecordReader& record);
void decodeRay(RecordReader& record);
void decodeXline(RecordReader& record);
void decodeSolid(RecordReader& record);
void decodeFace(RecordReader& record);
void decodeShape(RecordReader& record);
void decodeSpline(RecordReader& record);
void decodeTolerance(RecordReader& record);
void decodeLeader(RecordReader& record);
void decodeMultiline(RecordReader& record);
void decodeImage(RecordReader& record);
void decodeWipeout(RecordReader& record);
void decodeViewport(RecordReader& record);
// Polylines and their vertices.
void decodeLightPolyline(RecordReader& record);
void decodePolyline2D(RecordReader& record);
void decodePolyline3D(RecordReader& record);
void decodePolyfaceMesh(RecordReader& record);
void decodePolygonMesh(RecordReader& record);
void decodeVertex2D(RecordReader& record);
void decodeVertex(RecordReader& record);
void decodeVertexFace(RecordReader& record);
// Texts, blocks and inserts.
void decodeText(RecordReader& record);
void decodeAttribute(RecordReader& record);
void decodeAttributeDefinition(RecordReader& record);
void decodeMtext(RecordReader& record);
void decodeInsert(RecordReader& record);
void decodeBlock(RecordReader& record);
void decodeBlockEnd(RecordReader& record);
void decodeNothing(RecordReader& record);
// Dimensions.
void decodeOrdinateDimension(RecordReader& record);
void decodeLinearDimension(RecordReader& record);
void decodeAlignedDimension(RecordReader& record);
void decodeAngular3Dimension(RecordReader& record);
void decodeAngular2Dimension(RecordReader& record);
void decodeRadialDimension(RecordReader& record);
void decodeDiametricDimension(RecordReader& record);
void decodeArcDimension(RecordReader& record);
// Hatches.
void decodeHatch(RecordReader& record);
// Tables and their records.
void decodeControl(RecordReader& record);
void decodeLayer(RecordReader& record);
void decodeApplication(RecordReader& record);
void decodeStyle(RecordReader& record);
void decodeLineType(RecordReader& record);
void decodeView(RecordReader& record);
void decodeCoordinateSystem(RecordReader& record);
void decodeViewportRecord(RecordReader& record);
void decodeDimensionStyle(RecordReader& record);
void decodeViewportHeader(RecordReader& record);
void decodeBlockHeader(RecordReader& record);
// Objects.
void decodeDictionary(RecordReader& record);
void decodeDictionaryWithDefault(RecordReader& record);
void decodeXrecord(RecordReader& record);
void decodeDictionaryVariable(RecordReader& record);
void decodeLayout(RecordReader& record);
void decodePlotSettings(RecordReader& record);
void decodeGroup(RecordReader& record);
void decodeSortTable(RecordReader& record);
void decodeScale(RecordReader& record);
void decodeColourObject(RecordReader& record);
void decodeImageDefinition(RecordReader& record);
void decodeImageReactor(RecordReader& record);

/// Members of a block as its record has them.
struct BlockMembers {
    std::uint64_t block = 0;             ///< the BLOCK
    std::uint64_t end = 0;               ///< the ENDBLK
    std::vector<std::uint64_t> members;  ///< of a chain the first and the last
    bool chain = false;
    std::uint64_t layout = 0;
    std::int64_t flags = 0;  ///< group 70 of the BLOCK
    std::string name;
    std::string path;  ///< of a reference
    std::string description;
    Point3 base{};
    std::vector<std::uint64_t> inserts;
    std::string preview;
    std::int64_t units = 0;
    bool explodable = true;
    std::int64_t scaling = 0;
    // Where a save may have to exchange something, in bits.
    std::array<std::uint64_t, 2> kindPlace{};   ///< anonymous, and whether it has ATTDEFs
    std::array<std::uint64_t, 2> countPlace{};  ///< of members; from R2004 on
    std::array<std::uint64_t, 2> basePlace{};
    std::array<std::uint64_t, 2> insertMarksPlace{};  ///< without the 0 behind
    std::vector<std::uint64_t> memberPlaces;          ///< of each handle, and where the last ends
    std::vector<std::uint64_t> insertPlaces;          ///< the same way
};
/// Takes the fields of a block's record.
[[nodiscard]] BlockMembers readBlockHeader(RecordReader& record);
/// Entries of a control object in their order; erased ones are 0. The block and line type tables
/// have their two fixed records behind.
[[nodiscard]] std::vector<std::uint64_t> readControl(RecordReader& record);
/// The start of every record of a table: its name and group 70.
struct TableStart {
    std::string name;
    std::int64_t flags = 0;
};
[[nodiscard]] TableStart readTableStart(RecordReader& record);
/// Group 71 of views and viewports; the last of its four bits is stored as its opposite.
[[nodiscard]] std::int64_t viewMode(Fields& in);

}  // namespace mor::host
