#include "host/dwg/record_groups.h"

#include "host/dwg/common_data.h"
#include "host/text/ascii.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace mor::host {

namespace {

/// A type of records: its number in every release, 0 for one that only classes have; its name in
/// DXF, and its decoder, null for one whose own data are not read.
struct TypeRow {
    std::uint16_t number;
    const char* name;
    Decode decode;
};

constexpr TypeRow kTypes[] = {{1, "TEXT", decodeText},
                              {2, "ATTRIB", decodeAttribute},
                              {3, "ATTDEF", decodeAttributeDefinition},
                              {4, "BLOCK", decodeBlock},
                              {5, "ENDBLK", decodeBlockEnd},
                              {6, "SEQEND", decodeNothing},
                              {7, "INSERT", decodeInsert},
                              {8, "INSERT", decodeInsert},
                              {10, "VERTEX", decodeVertex2D},
                              {11, "VERTEX", decodeVertex},
                              {12, "VERTEX", decodeVertex},
                              {13, "VERTEX", decodeVertex},
                              {14, "VERTEX", decodeVertexFace},
                              {15, "POLYLINE", decodePolyline2D},
                              {16, "POLYLINE", decodePolyline3D},
                              {17, "ARC", decodeArc},
                              {18, "CIRCLE", decodeCircle},
                              {19, "LINE", decodeLine},
                              {20, "DIMENSION", decodeOrdinateDimension},
                              {21, "DIMENSION", decodeLinearDimension},
                              {22, "DIMENSION", decodeAlignedDimension},
                              {23, "DIMENSION", decodeAngular3Dimension},
                              {24, "DIMENSION", decodeAngular2Dimension},
                              {25, "DIMENSION", decodeRadialDimension},
                              {26, "DIMENSION", decodeDiametricDimension},
                              {27, "POINT", decodePoint},
                              {28, "3DFACE", decodeFace},
                              {29, "POLYLINE", decodePolyfaceMesh},
                              {30, "POLYLINE", decodePolygonMesh},
                              {31, "SOLID", decodeSolid},
                              {32, "TRACE", decodeSolid},
                              {33, "SHAPE", decodeShape},
                              {34, "VIEWPORT", decodeViewport},
                              {35, "ELLIPSE", decodeEllipse},
                              {36, "SPLINE", decodeSpline},
                              {37, "REGION", nullptr},
                              {38, "3DSOLID", nullptr},
                              {39, "BODY", nullptr},
                              {40, "RAY", decodeRay},
                              {41, "XLINE", decodeXline},
                              {42, "DICTIONARY", decodeDictionary},
                              {43, "OLEFRAME", nullptr},
                              {44, "MTEXT", decodeMtext},
                              {45, "LEADER", decodeLeader},
                              {46, "TOLERANCE", decodeTolerance},
                              {47, "MLINE", decodeMultiline},
                              {48, "TABLE", decodeControl},
                              {49, "BLOCK_RECORD", decodeBlockHeader},
                              {50, "TABLE", decodeControl},
                              {51, "LAYER", decodeLayer},
                              {52, "TABLE", decodeControl},
                              {53, "STYLE", decodeStyle},
                              {56, "TABLE", decodeControl},
                              {57, "LTYPE", decodeLineType},
                              {60, "TABLE", decodeControl},
                              {61, "VIEW", decodeView},
                              {62, "TABLE", decodeControl},
                              {63, "UCS", decodeCoordinateSystem},
                              {64, "TABLE", decodeControl},
                              {65, "VPORT", decodeViewportRecord},
                              {66, "TABLE", decodeControl},
                              {67, "APPID", decodeApplication},
                              {68, "TABLE", decodeControl},
                              {69, "DIMSTYLE", decodeDimensionStyle},
                              {70, "TABLE", decodeControl},
                              {71, "VX", decodeViewportHeader},
                              {72, "GROUP", decodeGroup},
                              {73, "MLINESTYLE", nullptr},
                              {74, "OLE2FRAME", nullptr},
                              {77, "LWPOLYLINE", decodeLightPolyline},
                              {78, "HATCH", decodeHatch},
                              {79, "XRECORD", decodeXrecord},
                              {80, "ACDBPLACEHOLDER", decodeNothing},
                              {82, "LAYOUT", decodeLayout},
                              {kDwgProxyEntity, "ACAD_PROXY_ENTITY", nullptr},
                              {kDwgProxyObject, "ACAD_PROXY_OBJECT", nullptr},
                              {0, "ACDBDICTIONARYWDFLT", decodeDictionaryWithDefault},
                              {0, "DICTIONARYVAR", decodeDictionaryVariable},
                              {0, "PLOTSETTINGS", decodePlotSettings},
                              {0, "SORTENTSTABLE", decodeSortTable},
                              {0, "SCALE", decodeScale},
                              {0, "DBCOLOR", decodeColourObject},
                              {0, "IMAGEDEF", decodeImageDefinition},
                              {0, "IMAGEDEF_REACTOR", decodeImageReactor},
                              {0, "IMAGE", decodeImage},
                              {0, "WIPEOUT", decodeWipeout},
                              {0, "ARC_DIMENSION", decodeArcDimension}};

constexpr std::pair<std::uint16_t, const char*> kControls[] = {
    {48, "BLOCK_RECORD"}, {50, "LAYER"}, {52, "STYLE"}, {56, "LTYPE"},    {60, "VIEW"},
    {62, "UCS"},          {64, "VPORT"}, {66, "APPID"}, {68, "DIMSTYLE"}, {70, "VX"}};

/// Null for a type that is not known.
const TypeRow* rowOf(const DwgFile& file, std::uint16_t type) {
    const TypeRow* row = nullptr;
    if (const DwgClass* known = file.classOf(type))
        row = std::ranges::find(kTypes, std::string_view(known->dxfName), &TypeRow::name);
    else if (type != 0)
        row = std::ranges::find(kTypes, type, &TypeRow::number);
    return row == std::end(kTypes) ? nullptr : row;
}

Decode decoderOf(const DwgFile& file, std::uint16_t type) {
    const TypeRow* row = rowOf(file, type);
    if (row == nullptr) return nullptr;
    // Up to R14 dictionaries with a default are stored in another way.
    if (row->decode == decodeDictionaryWithDefault && file.release() <= Release::R14)
        return nullptr;
    return row->decode;
}

std::uint64_t writeHead(GroupWriter& out, const DwgFile& file, const ObjectFrame& frame,
                        Fields& fields, bool paper) {
    if (!frame.entity) {
        const ObjectData data = readObjectData(fields, frame);
        writeObjectData(out, data, data.owner);
        return data.owner;
    }
    const EntityData data = readEntityData(fields, frame.handle);
    const std::uint64_t owner = ownerOf(data, file);
    writeObjectData(out, data.object, owner);
    out.marker("AcDbEntity");
    if (paper) out.integer(67, 1);
    writeEntityData(out, data, file);
    if (frame.graphicsBytes != 0) {
        BitReader bits(frame.bytes, frame.graphicsBegin, frame.end());
        writeBytes(out, bits.bytes(frame.graphicsBytes),
                   file.release() >= Release::R2010 ? 160 : 92, 310);
    }
    return owner;
}

}  // namespace

std::string dxfTypeOf(const DwgFile& file, std::uint16_t type) {
    if (const DwgClass* known = file.classOf(type); known != nullptr && !known->dxfName.empty())
        return known->dxfName;
    const TypeRow* row = rowOf(file, type);
    return row == nullptr ? "UNKNOWN" : row->name;
}

std::string tableOfControl(std::uint16_t type) {
    const auto* found =
        std::ranges::find(kControls, type, &std::pair<std::uint16_t, const char*>::first);
    return found == std::end(kControls) ? "" : found->second;
}

bool isDecoded(const DwgFile& file, std::uint16_t type) { return decoderOf(file, type) != nullptr; }

DecodedRecord decodeRecord(const DwgFile& file, const ObjectFrame& frame, RecordPlace place) {
    constexpr std::uint16_t kDimensionStyle = 69;
    DecodedRecord decoded;
    GroupWriter out(decoded.groups);
    out.text(0, dxfTypeOf(file, frame.type));
    if (const std::string table = tableOfControl(frame.type); !table.empty()) out.text(2, table);
    out.handle(frame.type == kDimensionStyle ? 105 : 5, frame.handle);
    decoded.handlesEnd = frame.end();
    if (frame.wrong != nullptr) return decoded;
    Fields fields = frame.fields(file.release());
    RecordReader record{file, fields, out, frame.handle, 0, frame.type};
    record.viewport = place.viewport;
    record.owner = writeHead(out, file, frame, fields, place.paper);
    if (const Decode decode = decoderOf(file, frame.type)) {
        decoded.known = true;
        decode(record);
        decoded.exact = fields.isUsedUp();
        if (decoded.exact) decoded.handlesEnd = fields.handles().position();
        decoded.owned = std::move(record.owned);
    }
    writeExtendedData(out, file, frame);
    return decoded;
}

std::optional<BlockMembers> blockMembersOf(const DwgFile& file, std::uint64_t header,
                                           BlockParts parts) {
    const auto frame = file.frameOf(header);
    if (!frame || frame->type != kDwgBlockHeader) return std::nullopt;
    Fields fields = frame->fields(file.release());
    static_cast<void>(readObjectData(fields, *frame));
    GroupList unused;
    GroupWriter nowhere(unused);
    RecordReader record{file, fields, nowhere, header, 0, frame->type};
    record.parts = parts;
    BlockMembers block = readBlockHeader(record);
    return fields.failed() ? std::nullopt : std::optional(std::move(block));
}

// ---- extended data ------------------------------------------------------------------------------

namespace {

constexpr int kFirstExtended = 1000;

/// One item of an application's list; false where it means nothing.
bool writeItem(GroupWriter& out, const DwgFile& file, ByteReader& in) {
    const unsigned kind = in.byte();
    const int code = kFirstExtended + static_cast<int>(kind);
    switch (kind) {
        case 0:
            if (file.release() >= Release::R2007) {
                out.text(code, utf8Of(in.bytes(std::size_t{in.word()} * 2)));
            } else {
                const std::size_t count = in.byte();
                static_cast<void>(in.word());
                out.text(code, std::string(in.bytes(count)));
            }
            break;
        case 2:
            out.literal(code, in.byte() == 0 ? "{" : "}");
            break;
        case 3:
        case 5: {
            std::uint64_t handle = 0;
            for (int i = 0; i < 8; ++i) handle = handle << 8U | in.byte();
            kind == 3 ? out.text(code, file.nameOf(handle)) : out.handle(code, handle);
            break;
        }
        case 4: {
            const std::string_view bytes = in.bytes(in.byte());
            bytes.empty() ? out.literal(code, "") : writeBytes(out, bytes, 0, code);
            break;
        }
        case 10:
        case 11:
        case 12:
        case 13:
        case 14:
        case 15:
            for (int axis = 0; axis < 3; ++axis) out.real(code + 10 * axis, in.real());
            break;
        case 40:
        case 41:
        case 42:
            out.real(code, in.real());
            break;
        case 70:
            out.integer(code, static_cast<std::int16_t>(in.word()));
            break;
        case 71:
            out.integer(code, static_cast<std::int32_t>(in.longWord()));
            break;
        default:
            return false;
    }
    return !in.failed();
}

/// Calls `visit` with the application's handle and the items of each list.
template <typename Visit>
void forEachList(const ObjectFrame& frame, const Visit& visit) {
    BitReader bits(frame.bytes, frame.extendedBegin, frame.extendedEnd);
    while (const auto length = static_cast<std::uint16_t>(bits.bitShort())) {
        const std::uint64_t application = bits.handle().from(frame.handle);
        visit(application, bits, length);
        if (bits.failed()) break;
    }
}

}  // namespace

void writeExtendedData(GroupWriter& out, const DwgFile& file, const ObjectFrame& frame) {
    forEachList(frame, [&](std::uint64_t application, BitReader& bits, std::uint16_t length) {
        const std::string items = bits.bytes(length);
        out.text(1001, file.nameOf(application));
        ByteReader in(items);
        while (in.remaining() > 0 && writeItem(out, file, in)) {
        }
    });
}

std::vector<std::string> applicationNames(const DwgFile& file, const ObjectFrame& frame) {
    std::vector<std::string> names;
    forEachList(frame, [&](std::uint64_t known, BitReader& bits, std::uint16_t length) {
        bits.skip(std::uint64_t{length} * 8);
        names.push_back(file.nameOf(known));
    });
    return names;
}

bool hasExtendedData(const DwgFile& file, const ObjectFrame& frame, std::string_view application) {
    return std::ranges::any_of(applicationNames(file, frame), [&](const std::string& name) {
        return equalsNoCaseAscii(name, application);
    });
}

}  // namespace mor::host
