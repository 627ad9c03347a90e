#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"
#include "host/dwg/record_groups.h"

#include <algorithm>

namespace mor::host {

namespace {

/// Fields that are left out of a text because they have their usual values.
enum TextBit : unsigned {
    kNoElevation = 1,
    kNoAlignment = 2,
    kNoOblique = 4,
    kNoRotation = 8,
    kNoWidth = 0x10,
    kNoGeneration = 0x20,
    kNoHorizontal = 0x40,
    kNoVertical = 0x80
};
constexpr std::size_t kMtextChunk = 250;

struct Text {
    double elevation = 0.0;
    Point2 point{};
    Point2 alignment{};
    Point3 normal{};
    double thickness = 0.0;
    double oblique = 0.0;
    double rotation = 0.0;
    double height = 0.0;
    double width = 1.0;
    std::string value;
    std::int64_t generation = 0;
    std::int64_t horizontal = 0;
    std::int64_t vertical = 0;
    std::uint64_t style = 0;
};

void readOldText(Fields& in, Text& text) {
    text.elevation = in.bitReal();
    text.point = in.point2();
    text.alignment = in.point2();
    text.normal = in.bitPoint3();
    for (double* part : {&text.thickness, &text.oblique, &text.rotation, &text.height, &text.width})
        *part = in.bitReal();
    text.value = in.text();
    for (std::int64_t* part : {&text.generation, &text.horizontal, &text.vertical})
        *part = in.bitShort();
}

void readNewText(Fields& in, Text& text) {
    const unsigned missing = in.byte();
    const auto has = [missing](unsigned bit) { return (missing & bit) == 0; };
    if (has(kNoElevation)) text.elevation = in.real();
    text.point = in.point2();
    if (has(kNoAlignment)) {
        const double x = in.data().differingReal(text.point[0]);
        text.alignment = {x, in.data().differingReal(text.point[1])};
    }
    text.normal = in.normal();
    text.thickness = in.thickness();
    if (has(kNoOblique)) text.oblique = in.real();
    if (has(kNoRotation)) text.rotation = in.real();
    text.height = in.real();
    if (has(kNoWidth)) text.width = in.real();
    text.value = in.text();
    if (has(kNoGeneration)) text.generation = in.bitShort();
    if (has(kNoHorizontal)) text.horizontal = in.bitShort();
    if (has(kNoVertical)) text.vertical = in.bitShort();
}

Text readText(RecordReader& record) {
    Text text;
    record.upTo(Release::R14) ? readOldText(record.in, text) : readNewText(record.in, text);
    text.style = record.handle();
    return text;
}

void writeText(RecordReader& record, const Text& text) {
    GroupWriter& out = record.out;
    out.marker("AcDbText");
    out.realUnless(39, text.thickness, 0.0);
    out.point(10, text.point, text.elevation);
    out.real(40, text.height);
    out.text(1, text.value);
    out.angleUnless(50, text.rotation, 0.0);
    out.realUnless(41, text.width, 1.0);
    out.angleUnless(51, text.oblique, 0.0);
    if (const std::string& style = record.file.nameOf(text.style); style != "Standard")
        out.text(7, style);
    out.integerUnless(71, text.generation, 0);
    out.integerUnless(72, text.horizontal, 0);
    if (text.horizontal != 0 || text.vertical != 0) out.point(11, text.alignment, text.elevation);
    out.normal(text.normal);
}

// ---- multi-line text ----------------------------------------------------------------------------

struct Mtext {
    Point3 point{};
    Point3 normal{};
    Point3 direction{};
    double width = 0.0;
    double definedHeight = 0.0;
    double height = 0.0;
    std::int64_t attachment = 0;
    std::int64_t flow = 0;
    double extentsHeight = 0.0;
    double extentsWidth = 0.0;
    std::string value;
    std::int64_t spacingStyle = 0;
    double spacing = 1.0;
    std::int64_t background = 0;
    double fillScale = 0.0;
    DwgColour fill;
    std::int64_t fillTransparency = 0;
    std::uint64_t style = 0;
    // From R2018 on.
    bool embedded = false;
    Point3 columnAxis{};
    Point3 columnPoint{};
    std::array<double, 4> columnSizes{};
    std::int64_t columnAttachment = 0;
    std::int64_t columns = 0;
    std::int64_t columnCount = 0;
    double columnWidth = 0.0;
    double columnGutter = 0.0;
    bool automaticHeight = false;
    bool reversed = false;
    std::vector<double> columnHeights;
};

void readColumns(RecordReader& record, Mtext& text) {
    Fields& in = record.in;
    if (!in.bit()) return;
    text.embedded = true;
    static_cast<void>(in.bitShort());
    static_cast<void>(in.bit());
    static_cast<void>(record.handle());
    text.columnAttachment = in.bitLong();
    text.columnAxis = in.bitPoint3();
    text.columnPoint = in.bitPoint3();
    for (double& size : text.columnSizes) size = in.bitReal();
    text.columns = in.bitShort();
    if (text.columns == 0) return;
    text.columnCount = in.bitLong();
    text.columnWidth = in.bitReal();
    text.columnGutter = in.bitReal();
    text.automaticHeight = in.bit();
    text.reversed = in.bit();
    if (text.columns != 2 || text.automaticHeight || text.columnCount <= 0) return;
    if (!in.data().holds(static_cast<std::uint64_t>(text.columnCount), 2)) return;
    for (std::int64_t i = 0; i < text.columnCount; ++i) text.columnHeights.push_back(in.bitReal());
}

Mtext readMtext(RecordReader& record) {
    Fields& in = record.in;
    Mtext text;
    text.point = in.bitPoint3();
    text.normal = in.bitPoint3();
    text.direction = in.bitPoint3();
    text.width = in.bitReal();
    if (in.since(Release::R2007)) text.definedHeight = in.bitReal();
    text.height = in.bitReal();
    text.attachment = in.bitShort();
    text.flow = in.bitShort();
    text.extentsHeight = in.bitReal();
    text.extentsWidth = in.bitReal();
    text.value = in.text();
    if (in.since(Release::R2000)) {
        text.spacingStyle = in.bitShort();
        text.spacing = in.bitReal();
        static_cast<void>(in.bit());
    }
    if (in.since(Release::R2004)) {
        text.background = in.bitLong();
        const std::int64_t filled = in.since(Release::R2018) ? 1 | 0x10 : 1;
        if ((text.background & filled) != 0) {
            text.fillScale = in.bitReal();
            text.fill = in.colour();
            text.fillTransparency = in.bitLong();
        }
    }
    if (in.since(Release::R2018)) readColumns(record, text);
    text.style = record.handle();
    return text;
}

/// Whether a text may be cut before that byte: not within a character.
bool isCut(char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; }

void writeChunks(GroupWriter& out, std::string_view text) {
    while (text.size() > kMtextChunk) {
        std::size_t cut = kMtextChunk;
        while (cut > 1 && !isCut(text[cut])) --cut;
        out.text(3, std::string(text.substr(0, cut)));
        text.remove_prefix(cut);
    }
    out.text(1, std::string(text));
}

void writeColumns(GroupWriter& out, const Mtext& text) {
    out.literal(101, "Embedded Object");
    out.integer(70, text.columnAttachment);
    out.point(10, text.columnAxis);
    out.point(11, text.columnPoint);
    for (std::size_t i = 0; i < text.columnSizes.size(); ++i)
        out.real(40 + static_cast<int>(i), text.columnSizes[i]);
    out.integer(71, text.columns);
    if (text.columns == 0) return;
    out.integer(72, text.columnCount);
    out.real(44, text.columnWidth);
    out.real(45, text.columnGutter);
    out.flag(73, text.automaticHeight);
    out.flag(74, text.reversed);
    for (const double height : text.columnHeights) out.real(46, height);
}

void writeMtext(RecordReader& record, const Mtext& text) {
    GroupWriter& out = record.out;
    out.marker("AcDbMText");
    out.point(10, text.point);
    out.real(40, text.height);
    out.real(41, text.width);
    if (record.since(Release::R2007)) out.real(46, text.definedHeight);
    out.integer(71, text.attachment);
    out.integer(72, text.flow);
    writeChunks(out, text.value);
    if (const std::string& style = record.file.nameOf(text.style); style != "Standard")
        out.text(7, style);
    out.normal(text.normal);
    if (text.direction != Point3{1.0, 0.0, 0.0}) out.point(11, text.direction);
    if (record.since(Release::R2000)) {
        out.integer(73, text.spacingStyle);
        out.real(44, text.spacing);
    }
    if (text.background != 0) {
        out.integer(90, text.background);
        writeColour(out, text.fill, 63, 421);
        out.real(45, text.fillScale);
        out.integer(441, text.fillTransparency);
    }
    if (text.embedded) writeColumns(out, text);
}

// ---- attributes ---------------------------------------------------------------------------------

struct AttributeText {
    Text text;
    std::int64_t version = 0;
    std::string tag;
    std::int64_t length = 0;
    std::int64_t flags = 0;
    bool locked = false;
};

/// The text of many lines in an attribute from R2018 on: an entity of its own, without a frame.
void passEmbeddedText(RecordReader& record) {
    Fields& in = record.in;
    static_cast<void>(readEntityData(in, record.own));
    static_cast<void>(readMtext(record));
    const auto size = static_cast<std::uint16_t>(in.bitShort());
    if (size == 0) return;
    in.data().skip(std::uint64_t{size} * 8);
    static_cast<void>(record.handle());
    static_cast<void>(in.bitShort());
}

AttributeText readAttribute(RecordReader& record) {
    Fields& in = record.in;
    AttributeText attribute;
    attribute.text = readText(record);
    if (in.since(Release::R2010)) attribute.version = in.byte();
    constexpr unsigned kSingleLine = 1;
    if (in.since(Release::R2018) && in.byte() != kSingleLine) passEmbeddedText(record);
    attribute.tag = in.text();
    attribute.length = in.bitShort();
    attribute.flags = in.byte();
    if (in.since(Release::R2007)) attribute.locked = in.bit();
    return attribute;
}

void writeAttributeEnd(RecordReader& record, const AttributeText& attribute) {
    GroupWriter& out = record.out;
    out.text(2, attribute.tag);
    out.integer(70, attribute.flags);
    out.integerUnless(73, attribute.length, 0);
    out.integerUnless(74, attribute.text.vertical, 0);
    if (record.since(Release::R2007)) out.flag(280, attribute.locked);
}

}  // namespace

void decodeText(RecordReader& record) {
    const Text text = readText(record);
    writeText(record, text);
    record.out.marker("AcDbText");
    record.out.integerUnless(73, text.vertical, 0);
}

void decodeAttribute(RecordReader& record) {
    const AttributeText attribute = readAttribute(record);
    writeText(record, attribute.text);
    record.out.marker("AcDbAttribute");
    if (record.since(Release::R2010)) record.out.integer(280, attribute.version);
    writeAttributeEnd(record, attribute);
}

void decodeAttributeDefinition(RecordReader& record) {
    const AttributeText attribute = readAttribute(record);
    const std::int64_t version = record.since(Release::R2010) ? record.in.byte() : 0;
    std::string prompt = record.in.text();
    writeText(record, attribute.text);
    record.out.marker("AcDbAttributeDefinition");
    if (record.since(Release::R2010)) record.out.integer(280, version);
    record.out.text(3, std::move(prompt));
    writeAttributeEnd(record, attribute);
}

void decodeMtext(RecordReader& record) { writeMtext(record, readMtext(record)); }

// ---- blocks and inserts -------------------------------------------------------------------------

namespace {

Point3 readScale(Fields& in) {
    if (in.upTo(Release::R14)) return in.bitPoint3();
    switch (in.data().twoBits()) {
        case 3:
            return {1.0, 1.0, 1.0};
        case 2: {
            const double all = in.real();
            return {all, all, all};
        }
        case 1: {
            const double y = in.data().differingReal(1.0);
            return {1.0, y, in.data().differingReal(1.0)};
        }
        default: {
            const double x = in.real();
            const double y = in.data().differingReal(x);
            return {x, y, in.data().differingReal(x)};
        }
    }
}

}  // namespace

void decodeInsert(RecordReader& record) {
    Fields& in = record.in;
    const Point3 point = in.bitPoint3();
    const Point3 scale = readScale(in);
    const double rotation = in.bitReal();
    const Point3 normal = in.bitPoint3();
    const bool attributes = in.bit();
    const std::uint32_t count = attributes && in.since(Release::R2004) ? in.handleCount() : 0;
    const bool many = record.type == kDwgManyInsert;
    const std::int64_t columns = many ? in.bitShort() : 0;
    const std::int64_t rows = many ? in.bitShort() : 0;
    const double columnDistance = many ? in.bitReal() : 0.0;
    const double rowDistance = many ? in.bitReal() : 0.0;
    const std::uint64_t block = record.handle();
    if (attributes) record.takeOwned(count);
    GroupWriter& out = record.out;
    out.marker(many ? "AcDbMInsertBlock" : "AcDbBlockReference");
    if (attributes) out.integer(66, 1);
    record.name(2, block);
    out.point(10, point);
    for (std::size_t i = 0; i < scale.size(); ++i)
        out.realUnless(41 + static_cast<int>(i), scale[i], 1.0);
    out.angleUnless(50, rotation, 0.0);
    if (many) {
        out.integerUnless(70, columns, 1);
        out.integerUnless(71, rows, 1);
        out.realUnless(44, columnDistance, 0.0);
        out.realUnless(45, rowDistance, 0.0);
    }
    out.normal(normal);
}

void decodeBlock(RecordReader& record) {
    static_cast<void>(record.in.text());  // often the name of another time
    GroupWriter& out = record.out;
    out.marker("AcDbBlockBegin");
    const BlockMembers block =
        blockMembersOf(record.file, record.owner, BlockParts::Fields).value_or(BlockMembers());
    const std::string& name = record.file.nameOf(record.owner);
    out.text(2, name);
    out.integer(70, block.flags);
    out.point(10, block.base);
    out.text(3, name);
    out.text(1, block.path);
    if (!block.description.empty()) out.text(4, block.description);
}

void decodeBlockEnd(RecordReader& record) { record.out.marker("AcDbBlockEnd"); }

}  // namespace mor::host
