#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"

namespace mor::host {

namespace {

struct Viewport {
    Point3 centre{};
    double width = 0.0;
    double height = 0.0;
    Point3 target{};
    Point3 direction{};
    double twist = 0.0;
    double viewHeight = 0.0;
    double lens = 0.0;
    double front = 0.0;
    double back = 0.0;
    double snapAngle = 0.0;
    Point2 viewCentre{};
    Point2 snapBase{};
    Point2 snap{};
    Point2 grid{};
    std::int64_t zoom = 0;
    std::int64_t majorLines = 0;
    std::uint32_t frozen = 0;
    std::int64_t flags = 0;
    std::string plotStyle;
    std::int64_t mode = 0;
    bool ownSystem = false;
    bool systemIcon = false;
    Point3 origin{};
    Point3 xAxis{};
    Point3 yAxis{};
    double elevation = 0.0;
    std::int64_t orthographic = 0;
    std::int64_t shade = 0;
    bool defaultLights = false;
    std::int64_t lighting = 0;
    double brightness = 0.0;
    double contrast = 0.0;
    DwgColour ambient;
};

void readFields(Fields& in, Viewport& view) {
    view.target = in.bitPoint3();
    view.direction = in.bitPoint3();
    for (double* part :
         {&view.twist, &view.viewHeight, &view.lens, &view.front, &view.back, &view.snapAngle})
        *part = in.bitReal();
    for (Point2* part : {&view.viewCentre, &view.snapBase, &view.snap, &view.grid})
        *part = in.point2();
    view.zoom = in.bitShort();
    if (in.since(Release::R2007)) view.majorLines = in.bitShort();
    view.frozen = in.handleCount();
    view.flags = in.bitLong();
    view.plotStyle = in.text();
    view.mode = in.byte();
    view.ownSystem = in.bit();
    view.systemIcon = in.bit();
    for (Point3* part : {&view.origin, &view.xAxis, &view.yAxis}) *part = in.bitPoint3();
    view.elevation = in.bitReal();
    view.orthographic = in.bitShort();
    if (in.since(Release::R2004)) view.shade = in.bitShort();
    if (!in.since(Release::R2007)) return;
    view.defaultLights = in.bit();
    view.lighting = in.byte();
    view.brightness = in.bitReal();
    view.contrast = in.bitReal();
    view.ambient = in.colour();
}

void writeFields(GroupWriter& out, const Viewport& view) {
    out.point(12, view.viewCentre);
    out.point(13, view.snapBase);
    out.point(14, view.snap);
    out.point(15, view.grid);
    out.point(16, view.direction);
    out.point(17, view.target);
    out.real(42, view.lens);
    out.real(43, view.front);
    out.real(44, view.back);
    out.real(45, view.viewHeight);
    out.angle(50, view.snapAngle);
    out.angle(51, view.twist);
    out.integer(72, view.zoom);
}

void writeSystem(GroupWriter& out, const Viewport& view) {
    out.text(1, view.plotStyle);
    out.integer(281, view.mode);
    out.flag(71, view.systemIcon);
    out.flag(74, view.ownSystem);
    out.point(110, view.origin);
    out.point(111, view.xAxis);
    out.point(112, view.yAxis);
    out.integer(79, view.orthographic);
    out.real(146, view.elevation);
}

}  // namespace

void decodeViewport(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    Viewport view;
    view.centre = in.bitPoint3();
    view.width = in.bitReal();
    view.height = in.bitReal();
    out.marker("AcDbViewport");
    out.point(10, view.centre);
    out.real(40, view.width);
    out.real(41, view.height);
    if (record.viewport != 0) {
        out.integer(68, record.viewport);
        out.integer(69, record.viewport);
    }
    if (in.upTo(Release::R14)) {
        static_cast<void>(record.handle());
        return;
    }
    readFields(in, view);
    const std::vector<std::uint64_t> frozen = record.handles(view.frozen);
    const std::uint64_t clip = record.handle();
    if (in.upTo(Release::R2000)) static_cast<void>(record.handle());
    const std::uint64_t base = record.handle();
    const std::uint64_t named = record.handle();
    writeFields(out, view);
    for (const std::uint64_t layer : frozen) out.handle(in.upTo(Release::R2000) ? 341 : 331, layer);
    out.integer(90, view.flags);
    if (clip != 0) out.handle(340, clip);
    writeSystem(out, view);
    if (named != 0) out.handle(345, named);
    if (base != 0) out.handle(346, base);
    if (in.since(Release::R2004)) out.integer(170, view.shade);
    if (!in.since(Release::R2007)) return;
    const std::uint64_t background = record.handle();
    const std::uint64_t visual = record.handle();
    const std::uint64_t shadePlot = record.handle();
    const std::uint64_t sun = record.handle();
    out.integer(61, view.majorLines);
    if (background != 0) out.handle(332, background);
    if (shadePlot != 0) out.handle(333, shadePlot);
    if (visual != 0) out.handle(348, visual);
    out.flag(292, view.defaultLights);
    out.integer(282, view.lighting);
    out.real(141, view.brightness);
    out.real(142, view.contrast);
    writeColour(out, view.ambient, 63, 421);
    if (sun != 0) out.handle(361, sun);
}

}  // namespace mor::host
