#include "host/dwg/decoders.h"

#include <cmath>

namespace mor::host {

namespace {

/// Bits of what a light polyline says about itself.
enum LightFlag : unsigned {
    kNormal = 1,
    kThickness = 2,
    kWidth = 4,
    kElevation = 8,
    kBulges = 0x10,
    kWidths = 0x20,
    kGenerated = 0x100,
    kClosed = 0x200,
    kIdentifiers = 0x400
};

struct LightPolyline {
    unsigned flags = 0;
    double width = 0.0;
    double elevation = 0.0;
    double thickness = 0.0;
    Point3 normal{0.0, 0.0, 1.0};
    std::vector<Point2> points;
    std::vector<double> bulges;
    std::vector<std::int64_t> identifiers;
    std::vector<Point2> widths;
};

LightPolyline readLight(Fields& in) {
    LightPolyline line;
    line.flags = static_cast<std::uint16_t>(in.bitShort());
    if ((line.flags & kWidth) != 0) line.width = in.bitReal();
    if ((line.flags & kElevation) != 0) line.elevation = in.bitReal();
    if ((line.flags & kThickness) != 0) line.thickness = in.bitReal();
    if ((line.flags & kNormal) != 0) line.normal = in.bitPoint3();
    const std::uint32_t points = in.count(4);
    const std::uint32_t bulges = (line.flags & kBulges) != 0 ? in.count(2) : 0;
    const bool identified = in.since(Release::R2010) && (line.flags & kIdentifiers) != 0;
    const std::uint32_t identifiers = identified ? in.count(2) : 0;
    const std::uint32_t widths = (line.flags & kWidths) != 0 ? in.count(4) : 0;
    for (std::uint32_t i = 0; i < points && !in.failed(); ++i) {
        if (in.upTo(Release::R14) || i == 0) {
            line.points.push_back(in.point2());
            continue;
        }
        const Point2 before = line.points.back();
        const double x = in.data().differingReal(before[0]);
        line.points.push_back({x, in.data().differingReal(before[1])});
    }
    for (std::uint32_t i = 0; i < bulges && !in.failed(); ++i) line.bulges.push_back(in.bitReal());
    for (std::uint32_t i = 0; i < identifiers && !in.failed(); ++i)
        line.identifiers.push_back(in.bitLong());
    for (std::uint32_t i = 0; i < widths && !in.failed(); ++i)
        line.widths.push_back(in.bitPoint2());
    return line;
}

}  // namespace

void decodeLightPolyline(RecordReader& record) {
    const LightPolyline line = readLight(record.in);
    GroupWriter& out = record.out;
    out.marker("AcDbPolyline");
    out.integer(90, static_cast<std::int64_t>(line.points.size()));
    out.integer(70,
                ((line.flags & kClosed) != 0 ? 1 : 0) + ((line.flags & kGenerated) != 0 ? 128 : 0));
    if (line.widths.empty()) out.real(43, line.width);
    out.realUnless(38, line.elevation, 0.0);
    out.realUnless(39, line.thickness, 0.0);
    for (std::size_t i = 0; i < line.points.size(); ++i) {
        out.point(10, line.points[i]);
        if (i < line.widths.size()) {
            out.real(40, line.widths[i][0]);
            out.real(41, line.widths[i][1]);
        }
        if (i < line.bulges.size()) out.realUnless(42, line.bulges[i], 0.0);
        if (i < line.identifiers.size()) out.integer(91, line.identifiers[i]);
    }
    out.normal(line.normal);
}

namespace {

/// The groups that the POLYLINE of every kind begins with.
void begin(RecordReader& record, const char* marker, double elevation) {
    record.out.marker(marker);
    record.out.integer(66, 1);
    record.out.point(10, Point3{0.0, 0.0, elevation});
}

void takeVertices(RecordReader& record) {
    const bool counted = record.since(Release::R2004);
    record.takeOwned(counted ? record.in.handleCount() : 0);
}

}  // namespace

void decodePolyline2D(RecordReader& record) {
    Fields& in = record.in;
    const std::int64_t flags = in.bitShort();
    const std::int64_t curve = in.bitShort();
    const double startWidth = in.bitReal();
    const double endWidth = in.bitReal();
    const double thickness = in.thickness();
    const double elevation = in.bitReal();
    const Point3 normal = in.normal();
    takeVertices(record);
    begin(record, "AcDb2dPolyline", elevation);
    record.out.realUnless(39, thickness, 0.0);
    record.out.integerUnless(70, flags, 0);
    record.out.realUnless(40, startWidth, 0.0);
    record.out.realUnless(41, endWidth, 0.0);
    record.out.integerUnless(75, curve, 0);
    record.out.normal(normal);
}

void decodePolyline3D(RecordReader& record) {
    const unsigned curve = record.in.byte();
    const unsigned closed = record.in.byte();
    takeVertices(record);
    begin(record, "AcDb3dPolyline", 0.0);
    record.out.integer(70, 8 + ((closed & 1U) != 0 ? 1 : 0) + (curve != 0 ? 4 : 0));
    if (curve != 0) record.out.integer(75, (curve & 1U) != 0 ? 5 : 6);
}

void decodePolyfaceMesh(RecordReader& record) {
    const std::int64_t vertices = record.in.bitShort();
    const std::int64_t faces = record.in.bitShort();
    takeVertices(record);
    begin(record, "AcDbPolyFaceMesh", 0.0);
    record.out.integer(70, 64);
    record.out.integer(71, vertices);
    record.out.integer(72, faces);
}

void decodePolygonMesh(RecordReader& record) {
    Fields& in = record.in;
    const std::int64_t flags = in.bitShort();
    const std::int64_t curve = in.bitShort();
    std::array<std::int64_t, 4> counts{};
    for (std::int64_t& count : counts) count = in.bitShort();
    takeVertices(record);
    begin(record, "AcDbPolygonMesh", 0.0);
    record.out.integer(70, flags | 16);
    for (std::size_t i = 0; i < counts.size(); ++i)
        record.out.integerUnless(71 + static_cast<int>(i), counts[i], 0);
    record.out.integerUnless(75, curve, 0);
}

void decodeVertex2D(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const std::int64_t flags = in.byte();
    const Point3 point = in.bitPoint3();
    double startWidth = in.bitReal();
    const bool both = startWidth < 0.0;
    startWidth = std::fabs(startWidth);
    const double endWidth = both ? startWidth : in.bitReal();
    const double bulge = in.bitReal();
    const std::int64_t identifier = in.since(Release::R2010) ? in.bitLong() : 0;
    const double tangent = in.bitReal();
    out.marker("AcDbVertex");
    out.marker("AcDb2dVertex");
    out.point(10, point);
    out.realUnless(40, startWidth, 0.0);
    out.realUnless(41, endWidth, 0.0);
    out.realUnless(42, bulge, 0.0);
    out.integerUnless(70, flags, 0);
    out.angleUnless(50, tangent, 0.0);
    if (in.since(Release::R2010)) out.integerUnless(91, identifier, 0);
}

void decodeVertex(RecordReader& record) {
    constexpr std::uint16_t k3D = 11;
    constexpr std::uint16_t kMesh = 12;
    const std::int64_t flags = record.in.byte();
    record.out.marker("AcDbVertex");
    record.out.marker(record.type == k3D     ? "AcDb3dPolylineVertex"
                      : record.type == kMesh ? "AcDbPolygonMeshVertex"
                                             : "AcDbPolyFaceMeshVertex");
    record.out.point(10, record.in.bitPoint3());
    record.out.integer(70, flags);
}

void decodeVertexFace(RecordReader& record) {
    record.out.marker("AcDbFaceRecord");
    record.out.point(10, Point3{});
    record.out.integer(70, 128);
    for (const int code : {71, 72, 73, 74}) record.out.integerUnless(code, record.in.bitShort(), 0);
}

}  // namespace mor::host
