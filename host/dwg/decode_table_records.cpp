#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

/// A field and its group: kind of the field, code, and the value with which DXF leaves it out.
/// 'b' bit, 's' short, 'c' byte, 'd' real, 't' text, 'm' colour.
struct FieldGroup {
    char kind;
    int code;
    double usual = 0.0;
};

void pass(RecordReader& record, const FieldGroup& field) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const auto usual = static_cast<std::int64_t>(field.usual);
    switch (field.kind) {
        case 'b':
            out.integerUnless(field.code, in.bit() ? 1 : 0, usual);
            break;
        case 's':
            out.integerUnless(field.code, in.bitShort(), usual);
            break;
        case 'c':
            out.integerUnless(field.code, in.byte(), usual);
            break;
        case 'd':
            out.realUnless(field.code, in.bitReal(), field.usual);
            break;
        case 't':
            if (std::string text = in.text(); !text.empty()) out.text(field.code, std::move(text));
            break;
        default:
            if (const DwgColour colour = in.colour(); colour.number != usual)
                out.integer(field.code, colour.number);
            break;
    }
}

template <std::size_t count>
void passAll(RecordReader& record, const FieldGroup (&fields)[count]) {
    for (const FieldGroup& field : fields) pass(record, field);
}

constexpr std::int64_t kByBlockWeight = -2;
constexpr FieldGroup kOldDimension[] = {
    {'b', 71},  {'b', 72},  {'b', 73},  {'b', 74},  {'b', 75},  {'b', 76},  {'b', 170}, {'b', 172},
    {'b', 173}, {'b', 174}, {'b', 175}, {'c', 171}, {'c', 78},  {'b', 281}, {'b', 282}, {'c', 283},
    {'c', 280}, {'c', 287}, {'b', 288}, {'c', 284}, {'c', 285}, {'c', 286}, {'c', 77},  {'s', 270},
    {'s', 275}, {'s', 271}, {'s', 272}, {'s', 273}, {'s', 274}, {'d', 40},  {'d', 41},  {'d', 42},
    {'d', 43},  {'d', 44},  {'d', 45},  {'d', 46},  {'d', 47},  {'d', 48},  {'d', 140}, {'d', 141},
    {'d', 142}, {'d', 143}, {'d', 144}, {'d', 145}, {'d', 146}, {'d', 147}, {'t', 3},   {'t', 4},
    {'t', 5},   {'t', 6},   {'t', 7},   {'s', 176}, {'s', 177}, {'s', 178}};
constexpr FieldGroup kDimensionStart[] = {
    {'t', 3},        {'t', 4},  {'d', 40, 1.0}, {'d', 41, 0.18}, {'d', 42, 0.0625}, {'d', 43, 0.38},
    {'d', 44, 0.18}, {'d', 45}, {'d', 46},      {'d', 47},       {'d', 48}};
constexpr FieldGroup kDimensionFrom2007[] = {
    {'d', 49, 1.0}, {'d', 50, 0.7853981633974483}, {'s', 69}, {'m', 70}};
constexpr FieldGroup kDimensionTolerance[] = {{'b', 71},      {'b', 72}, {'b', 73, 1.0},
                                              {'b', 74, 1.0}, {'b', 75}, {'b', 76},
                                              {'s', 77},      {'s', 78}, {'s', 79}};
constexpr FieldGroup kDimensionMiddle[] = {
    {'d', 140, 0.18}, {'d', 141, 0.09}, {'d', 142},       {'d', 143, 25.4}, {'d', 144, 1.0},
    {'d', 145},       {'d', 146, 1.0},  {'d', 147, 0.09}, {'d', 148},       {'b', 170},
    {'s', 171, 2.0},  {'b', 172},       {'b', 173},       {'b', 174},       {'b', 175},
    {'m', 176},       {'m', 177},       {'m', 178},       {'s', 179},       {'s', 271, 4.0},
    {'s', 272, 4.0},  {'s', 273, 2.0},  {'s', 274, 2.0},  {'s', 275},       {'s', 276},
    {'s', 277, 2.0},  {'s', 278, 46.0}, {'s', 279},       {'s', 280},       {'b', 281},
    {'b', 282},       {'s', 283, 1.0},  {'s', 284},       {'s', 285},       {'s', 286},
    {'b', 288},       {'s', 289, 3.0}};

void decodeNewDimensionStyle(RecordReader& record) {
    Fields& in = record.in;
    passAll(record, kDimensionStart);
    if (in.since(Release::R2007)) passAll(record, kDimensionFrom2007);
    passAll(record, kDimensionTolerance);
    if (in.since(Release::R2007)) pass(record, {'s', 90});
    passAll(record, kDimensionMiddle);
    if (in.since(Release::R2007)) pass(record, {'b', 290});
    if (in.since(Release::R2010)) {
        pass(record, {'b', 295});
        // Units of small distances: not written to DXF.
        for (int i = 0; i < 2; ++i) {
            static_cast<void>(in.bitReal());
            static_cast<void>(in.text());
        }
    }
}

}  // namespace

void decodeDimensionStyle(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const TableStart start = readTableStart(record);
    out.marker("AcDbSymbolTableRecord");
    out.marker("AcDbDimStyleTableRecord");
    out.text(2, start.name);
    out.integer(70, start.flags);
    const bool newer = in.since(Release::R2000);
    newer ? decodeNewDimensionStyle(record) : passAll(record, kOldDimension);
    const std::int64_t lineWeight = newer ? in.bitShort() : kByBlockWeight;
    const std::int64_t extensionWeight = newer ? in.bitShort() : kByBlockWeight;
    static_cast<void>(in.bit());
    static_cast<void>(record.handle());
    out.handle(340, record.handle());
    const auto others = [&](int first, int count) {
        for (int i = 0; i < count; ++i)
            if (const std::uint64_t other = record.handle(); other != 0)
                out.handle(first + i, other);
    };
    if (in.since(Release::R2000)) others(341, 4);
    if (in.since(Release::R2007)) others(345, 3);
    out.integerUnless(371, lineWeight, kByBlockWeight);
    out.integerUnless(372, extensionWeight, kByBlockWeight);
}

void decodeViewportHeader(RecordReader& record) {
    const TableStart start = readTableStart(record);
    const bool on = record.in.bit();
    for (int i = 0; i < 3; ++i) static_cast<void>(record.handle());
    record.out.marker("AcDbSymbolTableRecord");
    record.out.marker("AcDbVXTableRecord");
    record.out.text(2, start.name);
    record.out.integer(70, start.flags | (on ? 1 : 0));
}

namespace {

struct ViewportRecord {
    double height = 0.0;
    double width = 0.0;
    Point2 centre{};
    Point3 target{};
    Point3 direction{};
    double twist = 0.0;
    std::array<double, 3> lens{};
    std::int64_t mode = 0;
    std::int64_t render = 0;
    bool defaultLights = false;
    std::int64_t lighting = 0;
    double brightness = 0.0;
    double contrast = 0.0;
    DwgColour ambient;
    Point2 lower{};
    Point2 upper{};
    std::array<std::int64_t, 7> switches{};  ///< 72 to 78
    double snapAngle = 0.0;
    Point2 gridSpacing{};
    Point2 snapBase{};
    Point2 snapSpacing{};
};

void readViewport(Fields& in, ViewportRecord& view) {
    view.height = in.bitReal();
    view.width = in.bitReal();
    view.centre = in.point2();
    view.target = in.bitPoint3();
    view.direction = in.bitPoint3();
    view.twist = in.bitReal();
    for (double& value : view.lens) value = in.bitReal();
    view.mode = viewMode(in);
    if (in.since(Release::R2000)) view.render = in.byte();
    if (in.since(Release::R2007)) {
        view.defaultLights = in.bit();
        view.lighting = in.byte();
        view.brightness = in.bitReal();
        view.contrast = in.bitReal();
        view.ambient = in.colour();
    }
    view.lower = in.point2();
    view.upper = in.point2();
    if (in.bit()) view.mode |= 8;
    auto& [zoom, fast, icon, snap, grid, style, pair] = view.switches;
    zoom = in.bitShort();
    fast = in.bit() ? 1 : 0;
    icon = in.bit() ? 1 : 0;
    if (in.bit()) icon |= 2;
    grid = in.bit() ? 1 : 0;
    view.gridSpacing = in.point2();
    snap = in.bit() ? 1 : 0;
    style = in.bit() ? 1 : 0;
    pair = in.bitShort();
    view.snapAngle = in.bitReal();
    view.snapBase = in.point2();
    view.snapSpacing = in.point2();
}

void writeViewport(GroupWriter& out, const ViewportRecord& view, Release release) {
    out.point(10, view.lower);
    out.point(11, view.upper);
    out.point(12, view.centre);
    out.point(13, view.snapBase);
    out.point(14, view.snapSpacing);
    out.point(15, view.gridSpacing);
    out.point(16, view.direction);
    out.point(17, view.target);
    out.real(40, view.height);
    out.real(41, view.height != 0.0 ? view.width / view.height : 0.0);
    for (std::size_t i = 0; i < view.lens.size(); ++i)
        out.real(42 + static_cast<int>(i), view.lens[i]);
    out.angle(50, view.snapAngle);
    out.angle(51, view.twist);
    out.integer(71, view.mode);
    for (std::size_t i = 0; i < view.switches.size(); ++i)
        out.integer(72 + static_cast<int>(i), view.switches[i]);
    if (release >= Release::R2000) out.integer(281, view.render);
}

}  // namespace

void decodeViewportRecord(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const TableStart start = readTableStart(record);
    ViewportRecord view;
    readViewport(in, view);
    out.marker("AcDbSymbolTableRecord");
    out.marker("AcDbViewportTableRecord");
    out.text(2, start.name);
    out.integer(70, start.flags);
    writeViewport(out, view, in.release());
    static_cast<void>(record.handle());
    std::array<std::uint64_t, 3> looks{};  // background, visual style, sun
    if (in.since(Release::R2007))
        for (std::uint64_t& look : looks) look = record.handle();
    if (in.upTo(Release::R14)) return;
    static_cast<void>(in.bit());
    out.flag(65, in.bit());
    for (const int code : {110, 111, 112}) out.point(code, in.bitPoint3());
    const double elevation = in.bitReal();
    out.integer(79, in.bitShort());
    out.real(146, elevation);
    if (const std::uint64_t named = record.handle(); named != 0) out.handle(345, named);
    if (const std::uint64_t base = record.handle(); base != 0) out.handle(346, base);
    if (!in.since(Release::R2007)) return;
    const std::int64_t gridFlags = in.bitShort();
    const std::int64_t majorLines = in.bitShort();
    if (looks[0] != 0) out.handle(332, looks[0]);
    if (looks[1] != 0) out.handle(348, looks[1]);
    if (looks[2] != 0) out.handle(361, looks[2]);
    out.integer(60, gridFlags);
    out.integer(61, majorLines);
    out.flag(292, view.defaultLights);
    out.integer(282, view.lighting);
    out.real(141, view.brightness);
    out.real(142, view.contrast);
    writeColour(out, view.ambient, 63, 421);
}

// ---- blocks -------------------------------------------------------------------------------------

namespace {

std::vector<std::uint64_t> placedHandles(RecordReader& record, std::uint32_t count,
                                         std::vector<std::uint64_t>& places) {
    std::vector<std::uint64_t> handles;
    BitReader& bits = record.in.handles();
    const bool placing = record.parts == BlockParts::Places;
    if (placing) places.push_back(bits.position());
    if (!bits.holds(count, 8)) return handles;
    handles.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        handles.push_back(record.handle());
        if (placing) places.push_back(bits.position());
    }
    return handles;
}

}  // namespace

BlockMembers readBlockHeader(RecordReader& record) {
    Fields& in = record.in;
    const TableStart start = readTableStart(record);
    BlockMembers block;
    block.name = start.name;
    block.flags = start.flags;
    const auto at = [&in] { return in.data().position(); };
    block.kindPlace[0] = at();
    for (const std::int64_t flag :
         {kAnonymousBlock, kBlockWithAttributes, kReferenceBlock, kOverlayBlock}) {
        if (flag == kReferenceBlock) block.kindPlace[1] = at();
        if (in.bit()) block.flags |= flag;
    }
    const bool unloaded = in.since(Release::R2000) && in.bit();
    if ((block.flags & kAnyReferenceBlock) != 0) {
        block.flags |= kReferenceBlock;
        if (!unloaded) block.flags |= kResolvedBlock;
    }
    const bool listed = (block.flags & kAnyReferenceBlock) == 0;
    block.countPlace[0] = at();
    const std::uint32_t count = listed && in.since(Release::R2004) ? in.handleCount() : 0;
    block.countPlace[1] = at();
    block.basePlace[0] = at();
    block.base = in.bitPoint3();
    block.basePlace[1] = at();
    block.path = in.text();
    std::uint32_t inserts = 0;
    if (in.since(Release::R2000)) {
        block.insertMarksPlace[0] = at();
        while (in.byte() != 0) ++inserts;
        block.insertMarksPlace[1] = at() - std::min<std::uint64_t>(8, at());
        block.description = in.text();
        block.preview = in.data().bytes(in.count(8));
    }
    if (in.since(Release::R2007)) {
        block.units = in.bitShort();
        block.explodable = in.bit();
        block.scaling = in.byte();
    }
    if (record.parts == BlockParts::Fields) return block;
    static_cast<void>(record.handle());
    block.block = record.handle();
    block.chain = in.upTo(Release::R2000);
    if (listed) block.members = placedHandles(record, block.chain ? 2 : count, block.memberPlaces);
    block.end = record.handle();
    if (in.since(Release::R2000)) {
        block.inserts = placedHandles(record, inserts, block.insertPlaces);
        block.layout = record.handle();
    }
    return block;
}

void decodeBlockHeader(RecordReader& record) {
    const BlockMembers block = readBlockHeader(record);
    GroupWriter& out = record.out;
    out.marker("AcDbSymbolTableRecord");
    out.marker("AcDbBlockTableRecord");
    record.name(2, record.own);
    if (record.upTo(Release::R14)) return;
    out.handle(340, block.layout);
    if (!block.preview.empty()) writeBytes(out, block.preview, 0, 310);
    std::vector<std::uint64_t> inserts = block.inserts;
    std::erase_if(inserts,
                  [&](std::uint64_t insert) { return record.file.map().find(insert) == nullptr; });
    if (!inserts.empty()) {
        out.literal(102, "{BLKREFS");
        for (const std::uint64_t insert : inserts) out.handle(331, insert);
        out.literal(102, "}");
    }
    if (!record.since(Release::R2007)) return;
    out.integer(70, block.units);
    out.flag(280, block.explodable);
    out.integer(281, block.scaling);
}

}  // namespace mor::host
