#include "host/dwg/decoders.h"

namespace mor::host {

namespace {

/// Kinds of dimensions in group 70.
enum DimensionKind : std::int64_t {
    kLinear = 0,
    kAligned = 1,
    kAngular2 = 2,
    kDiametric = 3,
    kRadial = 4,
    kAngular3 = 5,
    kOrdinate = 6,
    kArc = 8
};
constexpr std::int64_t kOwnBlock = 32;
constexpr std::int64_t kOrdinateX = 64;
constexpr std::int64_t kUserPosition = 128;

struct Dimension {
    std::int64_t version = 0;
    Point3 normal{};
    Point2 middle{};
    double elevation = 0.0;
    unsigned bits = 0;
    std::string text;
    double textRotation = 0.0;
    double horizontal = 0.0;
    double insertRotation = 0.0;
    std::int64_t attachment = 0;
    std::int64_t spacingStyle = 1;
    double spacing = 1.0;
    double measurement = 0.0;
    std::array<bool, 3> arrows{};
    Point2 clone{};
    Point3 definition{};  ///< group 10, which stands among the kind's own fields
    bool ordinateX = false;
};

Dimension readDimension(Fields& in) {
    Dimension dimension;
    if (in.since(Release::R2010)) dimension.version = in.byte();
    dimension.normal = in.bitPoint3();
    dimension.middle = in.point2();
    dimension.elevation = in.bitReal();
    dimension.bits = in.byte();
    dimension.text = in.text();
    dimension.textRotation = in.bitReal();
    dimension.horizontal = in.bitReal();
    static_cast<void>(in.bitPoint3());
    dimension.insertRotation = in.bitReal();
    if (in.since(Release::R2000)) {
        dimension.attachment = in.bitShort();
        dimension.spacingStyle = in.bitShort();
        dimension.spacing = in.bitReal();
        dimension.measurement = in.bitReal();
    }
    if (in.since(Release::R2007))
        for (bool& arrow : dimension.arrows) arrow = in.bit();
    dimension.clone = in.point2();
    return dimension;
}

/// The groups that all kinds have; takes the handles.
void writeDimension(RecordReader& record, const Dimension& dimension, std::int64_t kind) {
    GroupWriter& out = record.out;
    const std::uint64_t style = record.handle();
    const std::uint64_t block = record.handle();
    out.marker("AcDbDimension");
    if (record.since(Release::R2010)) out.integer(280, dimension.version);
    if (block != 0) record.name(2, block);
    out.point(10, dimension.definition);
    out.point(11, dimension.middle, dimension.elevation);
    if (dimension.clone != Point2{}) out.point(12, dimension.clone, dimension.elevation);
    const bool userPosition = (dimension.bits & 1U) == 0;
    const bool ownBlock = (dimension.bits & 2U) != 0;
    out.integer(70, kind + (ownBlock ? kOwnBlock : 0) + (dimension.ordinateX ? kOrdinateX : 0) +
                        (userPosition ? kUserPosition : 0));
    if (!dimension.text.empty()) out.text(1, dimension.text);
    if (record.since(Release::R2000)) {
        out.integer(71, dimension.attachment);
        out.integerUnless(72, dimension.spacingStyle, 1);
        out.realUnless(41, dimension.spacing, 1.0);
        out.real(42, dimension.measurement);
    }
    if (record.since(Release::R2007))
        for (std::size_t i = 0; i < dimension.arrows.size(); ++i)
            out.flag(73 + static_cast<int>(i), dimension.arrows[i]);
    out.angleUnless(53, dimension.textRotation, 0.0);
    out.angleUnless(54, dimension.insertRotation, 0.0);
    out.angleUnless(51, dimension.horizontal, 0.0);
    out.normal(dimension.normal);
    record.name(3, style);
}

struct Aligned {
    Point3 first{};
    Point3 second{};
    double oblique = 0.0;
};

Aligned readAligned(Fields& in, Dimension& dimension) {
    Aligned aligned;
    aligned.first = in.bitPoint3();
    aligned.second = in.bitPoint3();
    dimension.definition = in.bitPoint3();
    aligned.oblique = in.bitReal();
    return aligned;
}

void writeAligned(GroupWriter& out, const Aligned& aligned) {
    out.marker("AcDbAlignedDimension");
    out.point(13, aligned.first);
    out.point(14, aligned.second);
    out.angleUnless(52, aligned.oblique, 0.0);
}

/// The circular kinds: a point and the length of the leader.
void decodeRound(RecordReader& record, bool definitionFirst, std::int64_t kind,
                 const char* marker) {
    Dimension dimension = readDimension(record.in);
    Point3 point{};
    (definitionFirst ? dimension.definition : point) = record.in.bitPoint3();
    (definitionFirst ? point : dimension.definition) = record.in.bitPoint3();
    const double leader = record.in.bitReal();
    writeDimension(record, dimension, kind);
    record.out.marker(marker);
    record.out.point(15, point);
    record.out.real(40, leader);
}

}  // namespace

void decodeOrdinateDimension(RecordReader& record) {
    Dimension dimension = readDimension(record.in);
    dimension.definition = record.in.bitPoint3();
    const Point3 feature = record.in.bitPoint3();
    const Point3 end = record.in.bitPoint3();
    dimension.ordinateX = (record.in.byte() & 1U) != 0;
    writeDimension(record, dimension, kOrdinate);
    record.out.marker("AcDbOrdinateDimension");
    record.out.point(13, feature);
    record.out.point(14, end);
}

void decodeLinearDimension(RecordReader& record) {
    Dimension dimension = readDimension(record.in);
    const Aligned aligned = readAligned(record.in, dimension);
    const double angle = record.in.bitReal();
    writeDimension(record, dimension, kLinear);
    writeAligned(record.out, aligned);
    record.out.angleUnless(50, angle, 0.0);
    record.out.marker("AcDbRotatedDimension");
}

void decodeAlignedDimension(RecordReader& record) {
    Dimension dimension = readDimension(record.in);
    const Aligned aligned = readAligned(record.in, dimension);
    writeDimension(record, dimension, kAligned);
    writeAligned(record.out, aligned);
}

void decodeAngular3Dimension(RecordReader& record) {
    Dimension dimension = readDimension(record.in);
    dimension.definition = record.in.bitPoint3();
    std::array<Point3, 3> points{};
    for (Point3& point : points) point = record.in.bitPoint3();
    writeDimension(record, dimension, kAngular3);
    record.out.marker("AcDb3PointAngularDimension");
    for (std::size_t i = 0; i < points.size(); ++i)
        record.out.point(13 + static_cast<int>(i), points[i]);
}

void decodeAngular2Dimension(RecordReader& record) {
    Dimension dimension = readDimension(record.in);
    const Point2 arc = record.in.point2();
    std::array<Point3, 3> points{};
    for (Point3& point : points) point = record.in.bitPoint3();
    dimension.definition = record.in.bitPoint3();
    writeDimension(record, dimension, kAngular2);
    record.out.marker("AcDb2LineAngularDimension");
    for (std::size_t i = 0; i < points.size(); ++i)
        record.out.point(13 + static_cast<int>(i), points[i]);
    record.out.point(16, arc, dimension.elevation);
}

void decodeRadialDimension(RecordReader& record) {
    decodeRound(record, true, kRadial, "AcDbRadialDimension");
}

void decodeDiametricDimension(RecordReader& record) {
    decodeRound(record, false, kDiametric, "AcDbDiametricDimension");
}

void decodeArcDimension(RecordReader& record) {
    Fields& in = record.in;
    Dimension dimension = readDimension(in);
    dimension.definition = in.bitPoint3();
    std::array<Point3, 3> points{};
    for (Point3& point : points) point = in.bitPoint3();
    const bool partial = in.bit();
    const double start = in.bitReal();
    const double end = in.bitReal();
    const bool leader = in.bit();
    const Point3 leaderStart = in.bitPoint3();
    const Point3 leaderEnd = in.bitPoint3();
    writeDimension(record, dimension, kArc);
    GroupWriter& out = record.out;
    out.marker("AcDbArcDimension");
    for (std::size_t i = 0; i < points.size(); ++i) out.point(13 + static_cast<int>(i), points[i]);
    out.flag(70, partial);
    out.real(40, start);
    out.real(41, end);
    out.flag(71, leader);
    out.point(16, leaderStart);
    out.point(17, leaderEnd);
}

}  // namespace mor::host
