#pragma once

#include "tools/moradmin/picture/geometry.h"

#include <string>

namespace mor::tool {

/// Nothing is drawn that lies further out: sums of such numbers are out of range.
inline constexpr double kFarthest = 1e100;

/// The rectangle around what was drawn, in plan view.
struct Extent {
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;
    bool empty = true;

    void include(double x, double y);
    void include(const Extent& other);
};

/// A number with the shortest digits that read back to the same bits, without a needless ".0".
[[nodiscard]] std::string numberText(double value);

/// A circle or ellipse in space: the point at angle t is centre + cos(t) * u + sin(t) * v.
struct Curve {
    Point centre{};
    Point u{};
    Point v{};

    [[nodiscard]] Point at(double angle) const;
};

/// The data of an SVG path, from points in space that are seen from above. `origin` is taken away
/// from all coordinates.
class Outline {
public:
    explicit Outline(const Point& origin) : m_origin(origin) {}

    void moveTo(const Point& point) { put('M', point); }
    void lineTo(const Point& point) { put('L', point); }
    /// Goes on along a curve from angle to angle, in radians, either way; begins at the first one
    /// when nothing was drawn before. A curve seen from its edge is drawn as the line that it is.
    void along(const Curve& curve, double from, double to);
    void close() { m_data += 'Z'; }

    [[nodiscard]] const std::string& data() const { return m_data; }
    [[nodiscard]] const Extent& extent() const { return m_extent; }
    /// False once a number was out of range.
    [[nodiscard]] bool isFinite() const { return m_finite; }

private:
    void put(char command, const Point& point);
    void putCoordinates(const Point& point);
    void includeTurningPoints(const Curve& curve, double from, double to);

    Point m_origin;
    std::string m_data;
    Extent m_extent;
    bool m_finite = true;
};

}  // namespace mor::tool
