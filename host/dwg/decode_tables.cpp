#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"
#include "host/text/group_codes.h"

#include <algorithm>

namespace mor::host {

namespace {

constexpr std::int64_t kDependent = 16;
constexpr std::int64_t kResolved = 32;
constexpr std::int16_t kDependentMark = 256;

void begin(RecordReader& record, const TableStart& start, const char* marker) {
    record.out.marker("AcDbSymbolTableRecord");
    record.out.marker(marker);
    record.out.text(2, start.name);
}

}  // namespace

std::int64_t viewMode(Fields& in) {
    std::int64_t mode = 0;
    for (const std::int64_t bit : {1, 2, 4})
        if (in.bit()) mode |= bit;
    if (!in.bit()) mode |= 16;
    return mode;
}

TableStart readTableStart(RecordReader& record) {
    TableStart start;
    start.name = record.in.text();
    bool depends = false;
    if (record.since(Release::R2007)) {
        depends = record.in.bitShort() == kDependentMark;
    } else {
        static_cast<void>(record.in.bit());
        static_cast<void>(record.in.bitShort());
        depends = record.in.bit();
    }
    if (depends) start.flags |= kDependent | kResolved;
    return start;
}

std::vector<std::uint64_t> readControl(RecordReader& record) {
    constexpr std::uint16_t kDimensionStyles = 68;
    const std::uint32_t count = record.in.handleCount();
    const bool more = record.type == kDimensionStyles && record.since(Release::R2000);
    const std::uint32_t others = more ? record.in.byte() : 0;
    std::vector<std::uint64_t> entries = record.handles(count);
    if (record.type == kDwgBlockControl || record.type == kDwgLineTypeControl)
        for (const std::uint64_t fixed : record.handles(2)) entries.push_back(fixed);
    static_cast<void>(record.handles(others));
    return entries;
}

void decodeControl(RecordReader& record) {
    const std::size_t fixed =
        record.type == kDwgBlockControl || record.type == kDwgLineTypeControl ? 2 : 0;
    const std::size_t count = readControl(record).size();
    record.out.marker("AcDbSymbolTable");
    record.out.integer(70, static_cast<std::int64_t>(count - std::min(count, fixed)));
}

void decodeLayer(RecordReader& record) {
    Fields& in = record.in;
    const TableStart start = readTableStart(record);
    std::int64_t flags = start.flags;
    bool off = false;
    bool plots = true;
    unsigned weight = 0;
    if (in.upTo(Release::R14)) {
        if (in.bit()) flags |= kFrozenLayer;
        off = in.bit();
        if (in.bit()) flags |= 2;
        if (in.bit()) flags |= kLockedLayer;
    } else {
        const auto bits = static_cast<std::uint16_t>(in.bitShort());
        if ((bits & 1U) != 0) flags |= kFrozenLayer;
        off = (bits & 2U) != 0;
        if ((bits & 4U) != 0) flags |= 2;
        if ((bits & 8U) != 0) flags |= kLockedLayer;
        plots = (bits & 0x10U) != 0;
        weight = bits >> 5U & 0x1FU;
    }
    DwgColour colour = in.colour();
    static_cast<void>(record.handle());
    const std::uint64_t plotStyle = in.since(Release::R2000) ? record.handle() : 0;
    const std::uint64_t material = in.since(Release::R2007) ? record.handle() : 0;
    const std::uint64_t lineType = record.handle();
    const std::uint64_t visualStyle = in.since(Release::R2013) ? record.handle() : 0;
    GroupWriter& out = record.out;
    begin(record, start, "AcDbLayerTableRecord");
    out.integer(70, flags);
    if (off) colour.number = -colour.number;
    writeColour(out, colour, 62, 420);
    record.name(6, lineType);
    if (in.upTo(Release::R14)) return;
    if (!plots) out.integer(290, 0);
    out.integer(370, lineWeight(static_cast<std::uint8_t>(weight)));
    out.handle(390, plotStyle);
    if (in.since(Release::R2007)) out.handle(347, material);
    if (in.since(Release::R2013)) out.handle(348, visualStyle);
}

void decodeApplication(RecordReader& record) {
    const TableStart start = readTableStart(record);
    static_cast<void>(record.in.byte());
    static_cast<void>(record.handle());
    begin(record, start, "AcDbRegAppTableRecord");
    record.out.integer(70, start.flags);
}

void decodeStyle(RecordReader& record) {
    Fields& in = record.in;
    const TableStart start = readTableStart(record);
    const bool shapes = in.bit();
    const bool vertical = in.bit();
    GroupWriter& out = record.out;
    begin(record, start, "AcDbTextStyleTableRecord");
    out.integer(70, start.flags | (shapes ? 1 : 0) | (vertical ? 4 : 0));
    out.real(40, in.bitReal());
    out.real(41, in.bitReal());
    out.angle(50, in.bitReal());
    out.integer(71, in.byte());
    out.real(42, in.bitReal());
    out.text(3, in.text());
    out.text(4, in.text());
    static_cast<void>(record.handle());
}

namespace {

/// Bits of a dash's group 74.
enum DashFlag : std::int64_t { kDashText = 2, kDashShape = 4, kOldDashFlags = 7 };

struct Dash {
    double length = 0.0;
    std::int64_t number = 0;  ///< of a shape, or where a text begins
    Point2 offset{};
    double scale = 0.0;
    double rotation = 0.0;
    std::int64_t flags = 0;
};

std::vector<Dash> readDashes(Fields& in) {
    std::vector<Dash> dashes(in.byte());
    for (Dash& dash : dashes) {
        dash.length = in.bitReal();
        dash.number = in.bitShort();
        dash.offset = in.point2();
        dash.scale = in.bitReal();
        dash.rotation = in.bitReal();
        dash.flags = in.bitShort();
        if (!in.since(Release::R2013)) dash.flags &= kOldDashFlags;
    }
    return dashes;
}

/// The texts of dashes, which lie in one area.
std::string readDashTexts(Fields& in, const std::vector<Dash>& dashes) {
    constexpr std::uint64_t kTextBytes = 256;
    bool texts = false;
    for (const Dash& dash : dashes) texts = texts || (dash.flags & kDashText) != 0;
    if (in.upTo(Release::R2004)) return in.data().bytes(kTextBytes);
    return texts ? in.data().bytes(2 * kTextBytes) : std::string();
}

std::string dashText(std::string_view area, std::int64_t at, bool wide) {
    const std::size_t unit = wide ? 2 : 1;
    const std::size_t begin = static_cast<std::size_t>(at) * unit;
    if (at < 0 || begin >= area.size()) return {};
    std::size_t end = begin;
    while (end + unit <= area.size() &&
           area.substr(end, unit).find_first_not_of('\0') != std::string_view::npos)
        end += unit;
    const std::string_view text = area.substr(begin, end - begin);
    return wide ? utf8Of(text) : std::string(text);
}

}  // namespace

void decodeLineType(RecordReader& record) {
    Fields& in = record.in;
    const TableStart start = readTableStart(record);
    std::string description = in.text();
    const double length = in.bitReal();
    const std::int64_t alignment = in.byte();
    const std::vector<Dash> dashes = readDashes(in);
    const std::string texts = readDashTexts(in, dashes);
    static_cast<void>(record.handle());
    GroupWriter& out = record.out;
    begin(record, start, "AcDbLinetypeTableRecord");
    out.integer(70, start.flags);
    out.text(3, std::move(description));
    out.integer(72, alignment);
    out.integer(73, static_cast<std::int64_t>(dashes.size()));
    out.real(40, length);
    for (const Dash& dash : dashes) {
        const std::uint64_t style = record.handle();
        out.real(49, dash.length);
        out.integer(74, dash.flags);
        if ((dash.flags & (kDashText | kDashShape)) == 0) continue;
        out.integer(75, (dash.flags & kDashShape) != 0 ? dash.number : 0);
        out.handle(340, style);
        out.real(46, dash.scale);
        out.angle(50, dash.rotation);
        out.real(44, dash.offset[0]);
        out.real(45, dash.offset[1]);
        if ((dash.flags & kDashText) != 0)
            out.text(9, dashText(texts, dash.number, in.since(Release::R2007)));
    }
}

void decodeView(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const TableStart start = readTableStart(record);
    const double height = in.bitReal();
    const double width = in.bitReal();
    const Point2 centre = in.point2();
    const Point3 target = in.bitPoint3();
    const Point3 direction = in.bitPoint3();
    const double twist = in.bitReal();
    std::array<double, 3> lens{};
    for (double& value : lens) value = in.bitReal();
    const std::int64_t mode = viewMode(in);
    const std::int64_t render = in.since(Release::R2000) ? in.byte() : 0;
    if (in.since(Release::R2007)) {
        static_cast<void>(in.bit());
        static_cast<void>(in.byte());
        for (int i = 0; i < 2; ++i) static_cast<void>(in.bitReal());
        static_cast<void>(in.colour());
    }
    const bool paper = in.bit();
    begin(record, start, "AcDbViewTableRecord");
    out.integer(70, start.flags | (paper ? 1 : 0));
    out.real(40, height);
    out.point(10, centre);
    out.real(41, width);
    out.point(11, direction);
    out.point(12, target);
    for (std::size_t i = 0; i < lens.size(); ++i) out.real(42 + static_cast<int>(i), lens[i]);
    out.angle(50, twist);
    out.integer(71, mode);
    static_cast<void>(record.handle());
    std::array<std::uint64_t, 3> looks{};  // background, visual style, sun
    if (in.since(Release::R2007))
        for (std::uint64_t& look : looks) look = record.handle();
    if (in.upTo(Release::R14)) return;
    out.integer(281, render);
    const bool ownSystem = in.bit();
    out.flag(72, ownSystem);
    if (ownSystem) {
        for (const int code : {110, 111, 112}) out.point(code, in.bitPoint3());
        const double elevation = in.bitReal();
        out.integer(79, in.bitShort());
        out.real(146, elevation);
        if (const std::uint64_t base = record.handle(); base != 0) out.handle(346, base);
        if (const std::uint64_t named = record.handle(); named != 0) out.handle(345, named);
    }
    if (!in.since(Release::R2007)) return;
    out.flag(73, in.bit());
    if (looks[0] != 0) out.handle(332, looks[0]);
    if (looks[1] != 0) out.handle(348, looks[1]);
    if (looks[2] != 0) out.handle(361, looks[2]);
    if (const std::uint64_t section = record.handle(); section != 0) out.handle(334, section);
}

void decodeCoordinateSystem(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const TableStart start = readTableStart(record);
    begin(record, start, "AcDbUCSTableRecord");
    out.integer(70, start.flags);
    for (const int code : {10, 11, 12}) out.point(code, in.bitPoint3());
    static_cast<void>(record.handle());
    if (in.upTo(Release::R14)) return;
    const double elevation = in.bitReal();
    const std::int64_t kind = in.bitShort();
    const auto count = static_cast<std::uint16_t>(in.bitShort());
    out.integer(79, kind);
    out.real(146, elevation);
    if (const std::uint64_t base = record.handle(); base != 0) out.handle(346, base);
    for (unsigned i = 0; i < count && !in.failed(); ++i) {
        out.integer(71, in.bitShort());
        out.point(13, in.bitPoint3());
    }
    static_cast<void>(record.handle());
}

}  // namespace mor::host
