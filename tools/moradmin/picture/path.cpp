#include "tools/moradmin/picture/path.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace mor::tool {

namespace {

/// Below this ratio of its radii a curve is seen from its edge.
constexpr double kFlat = 1e-9;
constexpr int kEdgeSteps = 32;
/// Lines that stand for a whole ellipse.
constexpr double kRoundSteps = 96.0;

/// Whether the curve, seen from above, is a line.
bool isFlat(const Curve& curve) {
    const double area = std::fabs(curve.u[0] * curve.v[1] - curve.u[1] * curve.v[0]);
    const double longest = std::hypot(curve.u[0], curve.u[1]) + std::hypot(curve.v[0], curve.v[1]);
    return area <= kFlat * longest * longest;
}

}  // namespace

void Extent::include(double x, double y) {
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    left = empty ? x : std::min(left, x);
    right = empty ? x : std::max(right, x);
    bottom = empty ? y : std::min(bottom, y);
    top = empty ? y : std::max(top, y);
    empty = false;
}

void Extent::include(const Extent& other) {
    if (other.empty) return;
    include(other.left, other.bottom);
    include(other.right, other.top);
}

Extent Extent::within(const Extent& other) const {
    if (empty || other.empty) return {};
    Extent both{std::max(left, other.left), std::max(bottom, other.bottom),
                std::min(right, other.right), std::min(top, other.top), false};
    both.empty = both.left > both.right || both.bottom > both.top;
    return both;
}

Point Curve::at(double angle) const { return centre + std::cos(angle) * u + std::sin(angle) * v; }

void Path::put(char op, double x, double y) {
    constexpr std::size_t kUsual = 16;  // numbers of a path
    if (m_numbers.empty()) m_numbers.reserve(kUsual);
    m_ops += op;
    m_numbers.push_back(x);
    m_numbers.push_back(y);
    m_extent.include(x, y);
    m_finite = m_finite && std::fabs(x) < kFarthest && std::fabs(y) < kFarthest;
}

void Path::append(const Path& other) {
    m_ops += other.m_ops;
    m_numbers.insert(m_numbers.end(), other.m_numbers.begin(), other.m_numbers.end());
    m_extent.include(other.m_extent);
    m_finite = m_finite && other.m_finite;
}

void Path::polygon(const std::vector<Spot>& corners) {
    for (std::size_t i = 0; i < corners.size(); ++i)
        put(i == 0 ? kMove : kLine, corners[i].x, corners[i].y);
    if (!corners.empty()) close();
}

void Path::join(const Point& point) {
    if (m_ops.empty())
        moveTo(point);
    else
        lineTo(point);
}

void Path::along(const Curve& curve, double from, double to) {
    m_finite = m_finite && std::isfinite(from) && std::isfinite(to) &&
               isWithin(curve.u, kFarthest) && isWithin(curve.v, kFarthest) &&
               isWithin(curve.centre, kFarthest);
    if (!m_finite) return;
    if (m_ops.empty()) moveTo(curve.at(from));
    if (isFlat(curve)) {
        for (int step = 1; step <= kEdgeSteps; ++step)
            lineTo(curve.at(step == kEdgeSteps ? to : from + (to - from) * step / kEdgeSteps));
    } else {
        m_ops += kArc;
        for (const double number : {curve.centre[0] - m_origin[0], curve.centre[1] - m_origin[1],
                                    curve.u[0], curve.u[1], curve.v[0], curve.v[1], from, to})
            m_numbers.push_back(number);
        const Point end = curve.at(to);
        m_extent.include(end[0] - m_origin[0], end[1] - m_origin[1]);
    }
    includeTurningPoints(curve, from, to);
}

void Path::includeTurningPoints(const Curve& curve, double from, double to) {
    const auto [first, last] = std::minmax(from, to);
    for (const std::size_t axis : {0U, 1U}) {
        // Where the coordinate neither grows nor shrinks; twice in each turn.
        const double angle = std::atan2(curve.v[axis], curve.u[axis]);
        const double begin =
            angle + std::ceil((first - angle) / std::numbers::pi) * std::numbers::pi;
        for (int half = 0; begin + half * std::numbers::pi <= last; ++half) {
            const Point point = curve.at(begin + half * std::numbers::pi);
            m_extent.include(point[0] - m_origin[0], point[1] - m_origin[1]);
        }
    }
}

Spot endOfArc(const double* n) {
    const double sine = std::sin(n[7]);
    const double cosine = std::cos(n[7]);
    return {n[0] + cosine * n[2] + sine * n[4], n[1] + cosine * n[3] + sine * n[5]};
}

std::vector<std::vector<Spot>> flattened(std::string_view ops, const double* n) {
    std::vector<std::vector<Spot>> parts;
    for (const char op : ops) {
        if (op == Path::kMove) parts.emplace_back();
        if (op == Path::kClose) continue;
        if (op != Path::kArc) {
            parts.back().push_back({n[0], n[1]});
            n += 2;
            continue;
        }
        const double span = n[7] - n[6];
        const int steps = std::max(
            2, static_cast<int>(std::ceil(kRoundSteps * std::fabs(span) / (2 * std::numbers::pi))));
        for (int step = 1; step <= steps; ++step) {
            const double at = n[6] + span * step / steps;
            parts.back().push_back({n[0] + std::cos(at) * n[2] + std::sin(at) * n[4],
                                    n[1] + std::cos(at) * n[3] + std::sin(at) * n[5]});
        }
        n += Path::kArcNumbers;
    }
    return parts;
}

}  // namespace mor::tool
