#include "host/dwg/decoders.h"

#include <algorithm>
#include <cmath>

namespace mor::host {

std::vector<std::uint64_t> RecordReader::handles(std::uint32_t count) {
    std::vector<std::uint64_t> taken;
    if (!in.handles().holds(count, 8)) return taken;
    taken.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) taken.push_back(handle());
    return taken;
}

void RecordReader::takeOwned(std::uint32_t count) {
    owned.chain = upTo(Release::R2000);
    owned.handles = handles(owned.chain ? 2 : count);
    owned.end = handle();
}

void decodeNothing(RecordReader& /*record*/) {}

void decodeLine(RecordReader& record) {
    Fields& in = record.in;
    Point3 start{};
    Point3 end{};
    if (in.upTo(Release::R14)) {
        start = in.bitPoint3();
        end = in.bitPoint3();
    } else {
        const bool flat = in.bit();
        for (const std::size_t i : {0U, 1U, 2U}) {
            if (i == 2 && flat) break;
            start[i] = in.real();
            end[i] = in.data().differingReal(start[i]);
        }
    }
    const double thickness = in.thickness();
    const Point3 normal = in.normal();
    record.out.marker("AcDbLine");
    record.out.realUnless(39, thickness, 0.0);
    record.out.point(10, start);
    record.out.point(11, end);
    record.out.normal(normal);
}

void decodePoint(RecordReader& record) {
    Fields& in = record.in;
    const Point3 point = in.bitPoint3();
    const double thickness = in.thickness();
    const Point3 normal = in.normal();
    const double angle = in.bitReal();
    record.out.marker("AcDbPoint");
    record.out.point(10, point);
    record.out.realUnless(39, thickness, 0.0);
    record.out.normal(normal);
    record.out.angleUnless(50, angle, 0.0);
}

void decodeCircle(RecordReader& record) {
    Fields& in = record.in;
    const Point3 centre = in.bitPoint3();
    const double radius = in.bitReal();
    const double thickness = in.thickness();
    record.out.marker("AcDbCircle");
    record.out.realUnless(39, thickness, 0.0);
    record.out.point(10, centre);
    record.out.real(40, radius);
    record.out.normal(in.normal());
}

void decodeArc(RecordReader& record) {
    decodeCircle(record);
    record.out.marker("AcDbArc");
    record.out.angle(50, record.in.bitReal());
    record.out.angle(51, record.in.bitReal());
}

void decodeEllipse(RecordReader& record) {
    Fields& in = record.in;
    record.out.marker("AcDbEllipse");
    record.out.point(10, in.bitPoint3());
    record.out.point(11, in.bitPoint3());
    record.out.point(210, in.bitPoint3());
    for (const int code : {40, 41, 42}) record.out.real(code, in.bitReal());
}

namespace {

void decodeWay(RecordReader& record, const char* marker) {
    record.out.marker(marker);
    record.out.point(10, record.in.bitPoint3());
    record.out.point(11, record.in.bitPoint3());
}

}  // namespace

void decodeRay(RecordReader& record) { decodeWay(record, "AcDbRay"); }
void decodeXline(RecordReader& record) { decodeWay(record, "AcDbXline"); }

void decodeSolid(RecordReader& record) {
    Fields& in = record.in;
    const double thickness = in.thickness();
    const double elevation = in.bitReal();
    record.out.marker("AcDbTrace");
    for (const int code : {10, 11, 12, 13}) record.out.point(code, in.point2(), elevation);
    record.out.realUnless(39, thickness, 0.0);
    record.out.normal(in.normal());
}

void decodeFace(RecordReader& record) {
    Fields& in = record.in;
    std::array<Point3, 4> corners{};
    std::int64_t hidden = 0;
    if (in.upTo(Release::R14)) {
        for (Point3& corner : corners) corner = in.bitPoint3();
        hidden = in.bitShort();
    } else {
        const bool noFlags = in.bit();
        const bool flat = in.bit();
        corners[0][0] = in.real();
        corners[0][1] = in.real();
        if (!flat) corners[0][2] = in.real();
        for (std::size_t i = 1; i < corners.size(); ++i)
            for (std::size_t k = 0; k < 3; ++k)
                corners[i][k] = in.data().differingReal(corners[i - 1][k]);
        if (!noFlags) hidden = in.bitShort();
    }
    record.out.marker("AcDbFace");
    for (std::size_t i = 0; i < corners.size(); ++i)
        record.out.point(10 + static_cast<int>(i), corners[i]);
    record.out.integerUnless(70, hidden, 0);
}

void decodeShape(RecordReader& record) {
    Fields& in = record.in;
    const Point3 point = in.bitPoint3();
    const double size = in.bitReal();
    const double rotation = in.bitReal();
    const double width = in.bitReal();
    const double oblique = in.bitReal();
    const double thickness = in.bitReal();
    static_cast<void>(in.bitShort());  // the shape's number; its name stands in the shape file
    const Point3 normal = in.bitPoint3();
    static_cast<void>(record.handle());
    record.out.marker("AcDbShape");
    record.out.realUnless(39, thickness, 0.0);
    record.out.point(10, point);
    record.out.real(40, size);
    record.out.angleUnless(50, rotation, 0.0);
    record.out.realUnless(41, width, 1.0);
    record.out.angleUnless(51, oblique, 0.0);
    record.out.normal(normal);
}

// ---- splines ------------------------------------------------------------------------------------

namespace {

/// Bits of a spline's group 70.
enum SplineFlag : std::int64_t { kClosed = 1, kPeriodic = 2, kRational = 4, kPlanar = 8 };

struct Spline {
    std::int64_t degree = 0;
    std::int64_t flags = 0;
    double fitTolerance = 0.0;
    double knotTolerance = 0.0;
    double controlTolerance = 0.0;
    Point3 startTangent{};
    Point3 endTangent{};
    std::vector<double> knots;
    std::vector<Point3> points;
    std::vector<double> weights;
    std::vector<Point3> fits;
    bool byFit = false;
};

void readControl(Fields& in, Spline& spline) {
    if (in.bit()) spline.flags |= kRational;
    if (in.bit()) spline.flags |= kClosed;
    if (in.bit()) spline.flags |= kPeriodic;
    spline.knotTolerance = in.bitReal();
    spline.controlTolerance = in.bitReal();
    const std::uint32_t knots = in.count(2);
    const std::uint32_t points = in.count(6);
    const bool weighted = in.bit();
    for (std::uint32_t i = 0; i < knots && !in.failed(); ++i) spline.knots.push_back(in.bitReal());
    for (std::uint32_t i = 0; i < points && !in.failed(); ++i) {
        spline.points.push_back(in.bitPoint3());
        if (weighted) spline.weights.push_back(in.bitReal());
    }
}

Spline readSpline(Fields& in) {
    Spline spline;
    std::int32_t scenario = in.bitLong();
    if (in.since(Release::R2013)) {
        const std::int32_t flags = in.bitLong();
        const std::int32_t parameter = in.bitLong();
        constexpr std::int32_t kCustomKnots = 15;
        if ((flags & 1) != 0)
            scenario = 2;
        else if (parameter == kCustomKnots)
            scenario = 1;
    }
    spline.degree = in.bitLong();
    spline.byFit = scenario == 2;
    if (!spline.byFit) {
        readControl(in, spline);
        return spline;
    }
    spline.fitTolerance = in.bitReal();
    spline.startTangent = in.bitPoint3();
    spline.endTangent = in.bitPoint3();
    const std::uint32_t fits = in.count(6);
    for (std::uint32_t i = 0; i < fits && !in.failed(); ++i) spline.fits.push_back(in.bitPoint3());
    return spline;
}

}  // namespace

void decodeSpline(RecordReader& record) {
    Spline spline = readSpline(record.in);
    const std::vector<Point3>& all = spline.byFit ? spline.fits : spline.points;
    const bool level =
        std::ranges::all_of(all, [&](const Point3& point) { return point[2] == all.front()[2]; });
    GroupWriter& out = record.out;
    out.marker("AcDbSpline");
    if (level) {
        spline.flags |= kPlanar;
        out.point(210, Point3{0.0, 0.0, 1.0});
    }
    out.integer(70, spline.flags);
    out.integer(71, spline.degree);
    out.integer(72, static_cast<std::int64_t>(spline.knots.size()));
    out.integer(73, static_cast<std::int64_t>(spline.points.size()));
    out.integer(74, static_cast<std::int64_t>(spline.fits.size()));
    if (!spline.byFit) {
        out.real(42, spline.knotTolerance);
        out.real(43, spline.controlTolerance);
    } else {
        out.real(44, spline.fitTolerance);
        if (spline.startTangent != Point3{}) out.point(12, spline.startTangent);
        if (spline.endTangent != Point3{}) out.point(13, spline.endTangent);
    }
    for (const double knot : spline.knots) out.real(40, knot);
    for (const double weight : spline.weights) out.real(41, weight);
    for (const Point3& point : spline.points) out.point(10, point);
    for (const Point3& point : spline.fits) out.point(11, point);
}

// ---- annotation ---------------------------------------------------------------------------------

void decodeTolerance(RecordReader& record) {
    Fields& in = record.in;
    if (in.upTo(Release::R14)) {
        static_cast<void>(in.bitShort());
        static_cast<void>(in.bitReal());
        static_cast<void>(in.bitReal());
    }
    const Point3 point = in.bitPoint3();
    const Point3 direction = in.bitPoint3();
    const Point3 normal = in.bitPoint3();
    std::string text = in.text();
    record.out.marker("AcDbFcf");
    record.name(3, record.handle());
    record.out.point(10, point);
    record.out.text(1, std::move(text));
    record.out.normal(normal);
    if (direction != Point3{1.0, 0.0, 0.0}) record.out.point(11, direction);
}

void decodeLeader(RecordReader& record) {
    Fields& in = record.in;
    static_cast<void>(in.bit());
    const std::int64_t kind = in.bitShort();
    const std::int64_t path = in.bitShort();
    const std::uint32_t count = in.count(6);
    std::vector<Point3> points;
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i) points.push_back(in.bitPoint3());
    static_cast<void>(in.bitPoint3());
    const Point3 normal = in.bitPoint3();
    const Point3 direction = in.bitPoint3();
    const Point3 blockOffset = in.bitPoint3();
    const Point3 textOffset = in.since(Release::R14) ? in.bitPoint3() : Point3{};
    if (in.upTo(Release::R14)) static_cast<void>(in.bitReal());
    const bool boxed = in.upTo(Release::R2007);
    const double height = boxed ? in.bitReal() : 0.0;
    const double width = boxed ? in.bitReal() : 0.0;
    const bool hook = in.bit();
    const bool arrow = in.bit();
    if (in.upTo(Release::R14)) {
        static_cast<void>(in.bitShort());
        static_cast<void>(in.bitReal());
        for (int i = 0; i < 2; ++i) static_cast<void>(in.bit());
        for (int i = 0; i < 2; ++i) static_cast<void>(in.bitShort());
        for (int i = 0; i < 2; ++i) static_cast<void>(in.bit());
    } else {
        static_cast<void>(in.bitShort());
        for (int i = 0; i < 2; ++i) static_cast<void>(in.bit());
    }
    const std::uint64_t annotation = record.handle();
    GroupWriter& out = record.out;
    out.marker("AcDbLeader");
    record.name(3, record.handle());
    if (!arrow) out.integer(71, 0);
    out.integerUnless(72, path, 0);
    out.integer(73, kind);
    out.flag(74, hook);
    out.flag(75, hook);
    if (boxed) {
        out.real(40, height);
        out.real(41, width);
    }
    out.integer(76, static_cast<std::int64_t>(points.size()));
    for (const Point3& point : points) out.point(10, point);
    if (annotation != 0) out.handle(340, annotation);
    out.normal(normal);
    if (direction != Point3{1.0, 0.0, 0.0}) out.point(211, direction);
    if (blockOffset != Point3{}) out.point(212, blockOffset);
    if (textOffset != Point3{}) out.point(213, textOffset);
}

void decodeMultiline(RecordReader& record) {
    Fields& in = record.in;
    const double scale = in.bitReal();
    const std::int64_t justification = in.byte();
    const Point3 base = in.bitPoint3();
    const Point3 normal = in.bitPoint3();
    const std::int64_t flags = in.bitShort();
    const unsigned lines = in.byte();
    const auto count = static_cast<std::uint16_t>(in.bitShort());
    const std::uint64_t style = record.handle();
    GroupWriter& out = record.out;
    out.marker("AcDbMline");
    record.name(2, style);
    out.handle(340, style);
    out.real(40, scale);
    out.integer(70, justification);
    out.integer(71, flags);
    out.integer(72, count);
    out.integer(73, lines);
    out.point(10, base);
    out.point(210, normal);
    const auto parameters = [&](int countCode, int code) {
        const auto parts = static_cast<std::uint16_t>(in.bitShort());
        out.integer(countCode, parts);
        for (unsigned k = 0; k < parts && !in.failed(); ++k) out.real(code, in.bitReal());
    };
    for (unsigned i = 0; i < count && !in.failed(); ++i) {
        for (const int code : {11, 12, 13}) out.point(code, in.bitPoint3());
        for (unsigned line = 0; line < lines && !in.failed(); ++line) {
            parameters(74, 41);
            parameters(75, 42);
        }
    }
}

// ---- images -------------------------------------------------------------------------------------

namespace {

void decodeFramed(RecordReader& record, const char* marker) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    out.marker(marker);
    out.integer(90, in.bitLong());
    for (const int code : {10, 11, 12}) out.point(code, in.bitPoint3());
    out.point(13, in.point2());
    out.handle(340, record.handle());
    out.integer(70, in.bitShort());
    out.flag(280, in.bit());
    for (const int code : {281, 282, 283}) out.integer(code, in.byte());
    if (in.since(Release::R2010)) out.flag(290, in.bit());
    out.handle(360, record.handle());
    const std::int64_t kind = in.bitShort();
    const std::uint32_t count = kind == 1 ? 2 : in.count(128);
    std::vector<Point2> corners;
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i) corners.push_back(in.point2());
    // A polygon is closed in DXF.
    if (kind == 2 && !corners.empty() && corners.front() != corners.back())
        corners.push_back(corners.front());
    out.integer(71, kind);
    out.integer(91, static_cast<std::int64_t>(corners.size()));
    for (const Point2& corner : corners) out.point(14, corner);
}

}  // namespace

void decodeImage(RecordReader& record) { decodeFramed(record, "AcDbRasterImage"); }
void decodeWipeout(RecordReader& record) { decodeFramed(record, "AcDbWipeout"); }

}  // namespace mor::host
