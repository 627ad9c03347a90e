#include "tools/moradmin/picture/outline.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace mor::tool {

namespace {

/// Below this ratio of its radii a curve is seen from its edge.
constexpr double kFlat = 1e-9;
constexpr int kEdgeSteps = 32;

/// The curve as it is seen from above: an ellipse with axes of its own.
struct Seen {
    double longer = 0.0;
    double shorter = 0.0;
    double turn = 0.0;     // of the longer axis, in degrees
    bool forwards = true;  // whether growing angles run counterclockwise
};

/// Radii and directions from two conjugate ones (singular values of the matrix that they form).
Seen seen(const Curve& curve) {
    const double e = (curve.u[0] + curve.v[1]) / 2;
    const double f = (curve.u[0] - curve.v[1]) / 2;
    const double g = (curve.u[1] + curve.v[0]) / 2;
    const double h = (curve.u[1] - curve.v[0]) / 2;
    const double q = std::hypot(e, h);
    const double r = std::hypot(f, g);
    const double turn = (std::atan2(h, e) + std::atan2(g, f)) / 2;
    return {q + r, std::fabs(q - r), turn * 180.0 / std::numbers::pi, q >= r};
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

std::string numberText(double value) {
    std::array<char, 40> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value == 0.0 ? 0.0 : value);
    static_cast<void>(error);  // the buffer is large enough for every double
    return {buffer.data(), end};
}

Point Curve::at(double angle) const { return centre + std::cos(angle) * u + std::sin(angle) * v; }

void Outline::put(char command, const Point& point) {
    m_data += command;
    putCoordinates(point);
}

void Outline::putCoordinates(const Point& point) {
    const double x = point[0] - m_origin[0];
    const double y = point[1] - m_origin[1];
    m_data += numberText(x) + " " + numberText(y);
    m_extent.include(x, y);
    m_finite = m_finite && std::fabs(x) < kFarthest && std::fabs(y) < kFarthest;
}

void Outline::along(const Curve& curve, double from, double to) {
    const Seen ellipse = seen(curve);
    m_finite = m_finite && ellipse.longer < kFarthest;
    if (!m_finite) return;
    if (m_data.empty()) moveTo(curve.at(from));
    const bool flat = ellipse.shorter <= kFlat * ellipse.longer;
    // Pieces of at most a quarter: no doubt then which of two arcs is meant.
    const double quarters = std::fabs(to - from) / (std::numbers::pi / 2);
    const int pieces = flat ? kEdgeSteps : std::max(1, static_cast<int>(std::ceil(quarters)));
    const std::string arc = "A" + numberText(ellipse.longer) + " " + numberText(ellipse.shorter) +
                            " " + numberText(ellipse.turn) + " 0 " +
                            (ellipse.forwards == (to >= from) ? "1 " : "0 ");
    for (int piece = 1; piece <= pieces; ++piece) {
        const Point end = curve.at(piece == pieces ? to : from + (to - from) * piece / pieces);
        if (flat) {
            lineTo(end);
            continue;
        }
        m_data += arc;
        putCoordinates(end);
    }
    includeTurningPoints(curve, from, to);
}

void Outline::includeTurningPoints(const Curve& curve, double from, double to) {
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

}  // namespace mor::tool
