#pragma once

#include "tools/moradmin/picture/geometry.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// Nothing is drawn that lies further out: sums of such numbers are out of range.
inline constexpr double kFarthest = 1e100;

/// A rectangle around what was drawn, in plan view.
struct Extent {
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;
    bool empty = true;

    void include(double x, double y);
    void include(const Extent& other);
    /// What both have; empty when they do not touch.
    [[nodiscard]] Extent within(const Extent& other) const;
    [[nodiscard]] double width() const { return right - left; }
    [[nodiscard]] double height() const { return top - bottom; }
};

/// The longer side of an extent; 1 where it has none.
[[nodiscard]] inline double longerSide(const Extent& extent) {
    const double side = std::max(extent.width(), extent.height());
    return side > 0.0 ? side : 1.0;
}

/// A circle or ellipse in space: the point at angle t is centre + cos(t) * u + sin(t) * v.
struct Curve {
    Point centre{};
    Point u{};
    Point v{};

    [[nodiscard]] Point at(double angle) const;
};

struct Spot {
    double x = 0.0;
    double y = 0.0;
};

/// Lines and pieces of ellipses as they are seen from above, for one stroke or to be filled.
/// `origin` is taken away from all points that are given in space.
class Path {
public:
    // The letters of `ops`, and how many numbers belong to each.
    static constexpr char kMove = 'M';   ///< x y
    static constexpr char kLine = 'L';   ///< x y
    static constexpr char kArc = 'A';    ///< centre, u, v (two each), angles from and to
    static constexpr char kClose = 'Z';  ///< none
    static constexpr std::size_t kArcNumbers = 8;

    explicit Path(const Point& origin = {}) : m_origin(origin) {}

    void moveTo(const Point& point) { put(kMove, point[0] - m_origin[0], point[1] - m_origin[1]); }
    void lineTo(const Point& point) { put(kLine, point[0] - m_origin[0], point[1] - m_origin[1]); }
    /// A line, or the beginning where there is none yet.
    void join(const Point& point);
    /// Goes on along a curve from angle to angle, in radians, either way; begins at the first one
    /// when nothing was drawn before. A curve seen from its edge is drawn as the line that it is.
    void along(const Curve& curve, double from, double to);
    void close() { m_ops += kClose; }
    /// The same in coordinates of the picture.
    void put(char op, double x, double y);
    void append(const Path& other);
    void polygon(const std::vector<Spot>& corners);

    [[nodiscard]] bool empty() const { return m_ops.empty(); }
    [[nodiscard]] const std::string& ops() const { return m_ops; }
    [[nodiscard]] const std::vector<double>& numbers() const { return m_numbers; }
    [[nodiscard]] const Extent& extent() const { return m_extent; }
    /// False once a number was out of range.
    [[nodiscard]] bool isFinite() const { return m_finite; }

private:
    void includeTurningPoints(const Curve& curve, double from, double to);

    Point m_origin;
    std::string m_ops;
    std::vector<double> m_numbers;
    Extent m_extent;
    bool m_finite = true;
};

/// Where an arc of a path ends, from its numbers.
[[nodiscard]] Spot endOfArc(const double* numbers);
/// The corners of a path's parts, arcs as many short lines.
[[nodiscard]] std::vector<std::vector<Spot>> flattened(std::string_view ops, const double* numbers);

}  // namespace mor::tool
