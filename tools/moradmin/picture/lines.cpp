#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace mor::tool {

namespace {

/// A smaller bulge is not seen, and its centre too far away to calculate with.
constexpr double kStraight = 1e-7;
/// Less than this counts as no turn, which means a whole one.
constexpr double kNoTurn = 1e-9;
constexpr double kWhole = 2 * std::numbers::pi;
/// Lines that stand for an arc whose width changes.
constexpr int kTaperSteps = 16;
/// How far edges are carried on to meet, in widths of the line; where it turns back they are not.
constexpr double kLongest = 6.0;

Curve circleOf(const Pencil& pen) {
    const host::PlaneAxes axes = pen.record().plane();
    const double radius = pen.record().real(40);
    return pen.place(
        Curve{fromPlane(axes, pen.record().point(10, {})), radius * axes[0], radius * axes[1]});
}

/// The circle in the plane of which a bulge is a piece, and its angles.
struct Bulge {
    Bulge(const Vertex& from, const Point& to) {
        const Point chord = to - from.at;
        const double b = from.bulge;
        const Point across{-chord[1], chord[0], 0.0};
        centre = 0.5 * (from.at + to) + ((1.0 - b * b) / (4.0 * b)) * across;
        centre[2] = from.at[2];
        radius = std::hypot(from.at[0] - centre[0], from.at[1] - centre[1]);
        begin = std::atan2(from.at[1] - centre[1], from.at[0] - centre[0]);
        span = 4.0 * std::atan(b);  // four times the arc tangent
    }
    Point centre{};
    double radius = 0.0;
    double begin = 0.0;
    double span = 0.0;
};

bool isStraight(const Vertex& from, const Point& to) {
    return std::fabs(from.bulge) < kStraight || (to[0] == from.at[0] && to[1] == from.at[1]);
}

/// A line whose width changes from vertex to vertex: sides that meet in mitres.
class Taper {
public:
    Taper(Pencil& pen, const host::PlaneAxes& axes) : m_pen(pen), m_axes(axes) {}

    void side(const Vertex& from, const Point& to) {
        std::vector<Point> middle = {from.at, to};
        if (!isStraight(from, to)) {
            const Bulge arc(from, to);
            middle.clear();
            for (int i = 0; i <= kTaperSteps; ++i) {
                const double angle = arc.begin + arc.span * i / kTaperSteps;
                middle.push_back({arc.centre[0] + arc.radius * std::cos(angle),
                                  arc.centre[1] + arc.radius * std::sin(angle), arc.centre[2]});
            }
        }
        Side side;
        const auto steps = static_cast<double>(middle.size() - 1);
        for (std::size_t i = 0; i < middle.size(); ++i) {
            const Point& before = middle[i == 0 ? 0 : i - 1];
            const Point& behind = middle[std::min(i + 1, middle.size() - 1)];
            const Point way = behind - before;
            const double length = std::hypot(way[0], way[1]);
            if (!(length > 0.0)) continue;
            const double width = from.startWidth +
                                 (from.endWidth - from.startWidth) * static_cast<double>(i) / steps;
            const Point across = (width / 2 / length) * Point{-way[1], way[0], 0.0};
            side.left.push_back(middle[i] + across);
            side.right.push_back(middle[i] - across);
        }
        if (side.left.size() > 1) m_sides.push_back(std::move(side));
    }
    void draw(bool closed) {
        for (std::size_t i = closed ? 0 : 1; i < m_sides.size(); ++i)
            join(m_sides[i == 0 ? m_sides.size() - 1 : i - 1], m_sides[i]);
        for (const Side& side : m_sides) {
            std::vector<Point> around = side.left;
            around.insert(around.end(), side.right.rbegin(), side.right.rend());
            Path path = m_pen.path();
            for (const Point& point : around) path.join(m_pen.place(fromPlane(m_axes, point)));
            path.close();
            m_pen.fill(path);
        }
    }

private:
    struct Side {
        std::vector<Point> left;
        std::vector<Point> right;
    };
    static void join(Side& one, Side& next) {
        const Point across = one.left.back() - one.right.back();
        const double most = kLongest * std::hypot(across[0], across[1]);
        meet(one.left, next.left, most);
        meet(one.right, next.right, most);
    }
    /// Carries two edges on, or shortens them, to where they meet, by `most` and never by a whole
    /// line.
    static void meet(std::vector<Point>& one, std::vector<Point>& next, double most) {
        const Point way = one.back() - one[one.size() - 2];
        const Point other = next[1] - next[0];
        const Point apart = next.front() - one.back();
        const double turn = way[0] * other[1] - way[1] * other[0];
        const double length = std::hypot(way[0], way[1]);
        const double otherLength = std::hypot(other[0], other[1]);
        if (!(std::fabs(turn) > kStraight * length * otherLength)) return;
        const double share = (apart[0] * other[1] - apart[1] * other[0]) / turn;
        const double otherShare = (apart[0] * way[1] - apart[1] * way[0]) / turn;
        if (share <= -1.0 || otherShare >= 1.0 || std::fabs(share) * length > most ||
            std::fabs(otherShare) * otherLength > most)
            return;
        one.back() = one.back() + share * way;
        next.front() = one.back();
    }

    Pencil& m_pen;
    const host::PlaneAxes& m_axes;
    std::vector<Side> m_sides;
};

/// Whether the line is as wide everywhere.
bool isUniform(const std::vector<Vertex>& vertices, std::size_t sides) {
    const double width = vertices.front().startWidth;
    return std::all_of(vertices.begin(), vertices.begin() + static_cast<std::ptrdiff_t>(sides),
                       [width](const Vertex& vertex) {
                           return vertex.startWidth == width && vertex.endWidth == width;
                       });
}

bool drawVertices(Pencil& pen, const std::vector<Vertex>& vertices, bool spatial) {
    if (vertices.empty()) return false;
    const host::PlaneAxes axes = spatial ? host::planeAxes({}) : pen.record().plane();
    const bool closed = isClosed(pen.record());
    const std::size_t sides = vertices.size() - (closed ? 0 : 1);
    if (!spatial && sides > 0 && !isUniform(vertices, sides)) {
        Taper taper(pen, axes);
        for (std::size_t i = 0; i < sides; ++i)
            taper.side(vertices[i], vertices[(i + 1) % vertices.size()].at);
        taper.draw(closed);
        return true;
    }
    Path path = pen.path();
    path.moveTo(pen.place(fromPlane(axes, vertices.front().at)));
    for (std::size_t i = 0; i < sides; ++i)
        bulgeTo(path, pen, vertices[i], vertices[(i + 1) % vertices.size()].at, axes);
    if (sides == 0) path.lineTo(pen.place(fromPlane(axes, vertices.front().at)));
    if (closed) path.close();
    Style style = pen.line();
    const double width = spatial ? 0.0 : vertices.front().startWidth * pen.scale();
    if (width > 0.0 && width < kFarthest) {
        style.width = static_cast<float>(width);
        style.flat = true;
    }
    pen.stroke(path, style);
    pen.lettersAlong(path);
    return path.isFinite();
}

}  // namespace

double turnTo(double turn, double whole) {
    const double rest = std::fmod(turn, whole);
    if (std::fabs(rest) < kNoTurn) return whole;
    return rest < 0.0 ? rest + whole : rest;
}

double radians(double degrees) { return degrees * (std::numbers::pi / 180.0); }

void bulgeTo(Path& path, const Pencil& pen, const Vertex& from, const Point& to,
             const host::PlaneAxes& axes) {
    if (isStraight(from, to)) return path.lineTo(pen.place(fromPlane(axes, to)));
    const Bulge arc(from, to);
    path.along(
        pen.place(Curve{fromPlane(axes, arc.centre), arc.radius * axes[0], arc.radius * axes[1]}),
        arc.begin, arc.begin + arc.span);
}

bool drawLine(Pencil& pen) {
    const auto from = pen.record().point(10);
    const auto to = pen.record().point(11);
    if (!from || !to) return false;
    Path path = pen.path();
    path.moveTo(pen.place(*from));
    path.lineTo(pen.place(*to));
    pen.stroke(path);
    return path.isFinite();
}

bool drawRay(Pencil& pen) {
    const auto at = pen.record().point(10);
    const auto way = pen.record().point(11);
    if (!at || !way) return false;
    pen.desk().scene.ray(pen.place(*at), pen.turn(*way), pen.record().type() == "XLINE",
                         pen.line());
    return true;
}

bool drawPoint(Pencil& pen) {
    const auto at = pen.record().point(10);
    if (!at) return false;
    const auto [sine, cosine] = host::sineAndCosine(-pen.record().real(50));
    const host::PlaneAxes axes = pen.record().plane();
    Style style = pen.line();
    style.dash = 0;
    pen.desk().scene.mark(pen.place(*at), fromPlane(axes, {cosine, sine, 0.0}),
                          fromPlane(axes, {-sine, cosine, 0.0}), style);
    return true;
}

bool drawCircle(Pencil& pen) {
    if (!pen.record().point(10)) return false;
    Path path = pen.path();
    path.along(circleOf(pen), 0.0, kWhole);
    path.close();
    pen.stroke(path);
    return path.isFinite();
}

bool drawArc(Pencil& pen) {
    if (!pen.record().point(10)) return false;
    const double from = std::fmod(pen.record().real(50), 360.0);
    const double to = from + turnTo(pen.record().real(51) - from, 360.0);
    Path path = pen.path();
    path.along(circleOf(pen), radians(from), radians(to));
    pen.stroke(path);
    return path.isFinite();
}

bool drawEllipse(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const auto centre = record.point(10);
    const auto major = record.point(11);
    if (!centre || !major) return false;
    const Point minor = record.real(40, 1.0) * cross(record.plane()[2], *major);
    const double from = std::fmod(record.real(41), kWhole);
    const double span = turnTo(record.real(42, kWhole) - from, kWhole);
    Path path = pen.path();
    path.along(pen.place(Curve{*centre, *major, minor}), from, from + span);
    if (span > kWhole - kNoTurn) path.close();
    pen.stroke(path);
    return path.isFinite();
}

bool drawLightPolyline(Pencil& pen) { return drawVertices(pen, verticesOf(pen.record()), false); }

bool drawPolyline(Pencil& pen) {
    if (isMesh(pen.record())) return drawOldMesh(pen);
    return drawVertices(
        pen, verticesBehind(pen.desk().document, pen.name(), pen.record(), pen.desk().read),
        isSpatial(pen.record()));
}

}  // namespace mor::tool
