#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace mor::tool {

namespace {

constexpr int kSpanSteps = 14;  // lines that stand for a piece of a curve
constexpr int kMostDegree = 25;
constexpr int kClosed = 1;

/// A point and its weight.
struct Weighted {
    Point point{};
    double weight = 1.0;
};

Weighted mix(const Weighted& a, const Weighted& b, double share) {
    return {(1.0 - share) * a.point + share * b.point, (1.0 - share) * a.weight + share * b.weight};
}

/// The point of a spline at a parameter within the knots k and k + 1.
Point splineAt(double at, std::size_t k, std::size_t degree, const std::vector<double>& knots,
               const std::vector<Weighted>& controls) {
    std::vector<Weighted> d(controls.begin() + static_cast<std::ptrdiff_t>(k - degree),
                            controls.begin() + static_cast<std::ptrdiff_t>(k + 1));
    for (std::size_t round = 1; round <= degree; ++round)
        for (std::size_t j = degree; j >= round; --j) {
            const std::size_t i = j + k - degree;
            const double width = knots[i + degree - round + 1] - knots[i];
            const double share = width > 0.0 ? (at - knots[i]) / width : 0.0;
            d[j] = mix(d[j - 1], d[j], share);
        }
    const Weighted& last = d[degree];
    return last.weight == 0.0 ? last.point : (1.0 / last.weight) * last.point;
}

/// All values of a group that stands several times, up to the data of a derived class.
struct SplineData {
    explicit SplineData(const EntityRecord& record) {
        std::vector<Point>* last = nullptr;
        for (const host::GroupView& group : record.groups()) {
            if (group.code == 100 && group.value == "AcDbHelix") break;
            const double value = readReal(group.value).value_or(0.0);
            if (group.code == 40) knots.push_back(value);
            if (group.code == 41) weights.push_back(value);
            if (group.code == 10 || group.code == 11) {
                last = group.code == 10 ? &controls : &fits;
                last->push_back({value, 0.0, 0.0});
            }
            if (last == nullptr) continue;
            if (group.code == 20 || group.code == 21) last->back()[1] = value;
            if (group.code == 30 || group.code == 31) last->back()[2] = value;
        }
    }
    std::vector<double> knots;
    std::vector<double> weights;
    std::vector<Point> controls;
    std::vector<Point> fits;
};

/// Directions in which a smooth curve passes its points: the curvature goes on everywhere.
std::vector<Point> tangents(const std::vector<Point>& points, const std::vector<double>& lengths) {
    const std::size_t n = points.size();
    std::vector<double> diagonal(n, 2.0);
    std::vector<double> above(n, 1.0);
    std::vector<Point> right(n);
    right[0] = (3.0 / lengths[0]) * (points[1] - points[0]);
    right[n - 1] = (3.0 / lengths[n - 2]) * (points[n - 1] - points[n - 2]);
    std::vector<double> below(n, 1.0);
    for (std::size_t i = 1; i + 1 < n; ++i) {
        below[i] = lengths[i];
        above[i] = lengths[i - 1];
        diagonal[i] = 2.0 * (lengths[i - 1] + lengths[i]);
        right[i] = 3.0 * ((lengths[i] / lengths[i - 1]) * (points[i] - points[i - 1]) +
                          (lengths[i - 1] / lengths[i]) * (points[i + 1] - points[i]));
    }
    for (std::size_t i = 1; i < n; ++i) {
        const double factor = below[i] / diagonal[i - 1];
        diagonal[i] -= factor * above[i - 1];
        right[i] = right[i] - factor * right[i - 1];
    }
    std::vector<Point> result(n);
    result[n - 1] = (1.0 / diagonal[n - 1]) * right[n - 1];
    for (std::size_t i = n - 1; i-- > 0;)
        result[i] = (1.0 / diagonal[i]) * (right[i] - above[i] * result[i + 1]);
    return result;
}

double distance(const Point& a, const Point& b) {
    const Point way = b - a;
    return std::sqrt(way[0] * way[0] + way[1] * way[1] + way[2] * way[2]);
}

}  // namespace

std::vector<Point> splinePoints(int degree, const std::vector<double>& knots,
                                const std::vector<Point>& controls,
                                const std::vector<double>& weights) {
    const auto p = static_cast<std::size_t>(degree);
    if (degree < 1 || degree > kMostDegree || controls.size() <= p ||
        knots.size() != controls.size() + p + 1 || !std::ranges::is_sorted(knots))
        return {};
    std::vector<Weighted> weighted;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const double weight = weights.size() == controls.size() ? weights[i] : 1.0;
        weighted.push_back({weight * controls[i], weight});
    }
    std::vector<Point> points;
    const int steps = degree == 1 ? 1 : kSpanSteps;
    for (std::size_t k = p; k < controls.size(); ++k) {
        if (!(knots[k] < knots[k + 1])) continue;
        for (int step = points.empty() ? 0 : 1; step <= steps; ++step)
            points.push_back(splineAt(knots[k] + (knots[k + 1] - knots[k]) * step / steps, k, p,
                                      knots, weighted));
    }
    return points;
}

std::vector<Point> curveThrough(const std::vector<Point>& given, bool closed) {
    std::vector<Point> points;
    for (const Point& point : given)
        if (points.empty() || distance(points.back(), point) > 0.0) points.push_back(point);
    if (closed && points.size() > 1 && distance(points.front(), points.back()) > 0.0)
        points.push_back(points.front());
    if (points.size() < 3) return points;
    std::vector<double> lengths;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        lengths.push_back(distance(points[i], points[i + 1]));
    const std::vector<Point> ways = tangents(points, lengths);
    std::vector<Point> result = {points.front()};
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        for (int step = 1; step <= kSpanSteps; ++step) {
            const double t = static_cast<double>(step) / kSpanSteps;
            const double u = 1.0 - t;
            result.push_back(
                (u * u * (1.0 + 2.0 * t)) * points[i] + (u * u * t * lengths[i]) * ways[i] +
                (t * t * (3.0 - 2.0 * t)) * points[i + 1] - (t * t * u * lengths[i]) * ways[i + 1]);
        }
    return result;
}

bool drawSpline(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const SplineData data(record);
    std::vector<Point> points =
        splinePoints(record.integer(71, 3), data.knots, data.controls, data.weights);
    if (points.empty()) points = curveThrough(data.fits, (record.integer(70) & kClosed) != 0);
    if (points.size() < 2) return false;
    pen.polyline(points, false);
    return true;
}

namespace {

/// Lines side by side, each through the same corners.
class Multiline {
public:
    explicit Multiline(Pencil& pen) : m_pen(pen) { read(); }

    bool draw() {
        if (m_corners.size() < 2) return false;
        const std::size_t lines = m_corners.front().offsets.size();
        if (lines == 0) return false;
        const auto style = m_pen.recordOf(m_pen.record().text(340));
        readStyle(style);
        if (style && (m_flags & kFilled) != 0) fill(lines);
        for (std::size_t line = 0; line < lines; ++line) {
            Path path = m_pen.path();
            for (const Corner& corner : m_corners) path.join(spot(corner, line));
            if (m_closed) path.close();
            const Element element = line < m_elements.size() ? m_elements[line] : Element{};
            m_pen.stroke(
                path,
                m_pen.line(element.colour.value_or(m_pen.look().colour),
                           element.lineType.empty()
                               ? m_pen.look().lineType
                               : &m_pen.desk().looks.lineType(m_pen.qualified(element.lineType))));
        }
        if (!m_closed) {
            cap(m_corners.front(), m_corners[1], kStartSquare, kStartRound);
            cap(m_corners.back(), m_corners[m_corners.size() - 2], kEndSquare, kEndRound);
        }
        return true;
    }

private:
    static constexpr int kFilled = 1;
    static constexpr int kStartSquare = 16;
    static constexpr int kStartRound = 64;
    static constexpr int kEndSquare = 256;
    static constexpr int kEndRound = 1024;

    struct Corner {
        Point at{};
        Point miter{};
        std::vector<double> offsets;  ///< of the lines, along the miter
    };
    struct Element {
        std::optional<int> colour;
        std::string lineType;
    };

    void read() {
        m_closed = (m_pen.record().integer(71) & 2) != 0;
        bool first = false;  // of a line's parameters, which is its offset
        for (const host::GroupView& group : m_pen.record().groups()) {
            const double value = readReal(group.value).value_or(0.0);
            if (group.code == 11) m_corners.push_back({{value, 0.0, 0.0}, {}, {}});
            if (m_corners.empty()) continue;
            Corner& corner = m_corners.back();
            if (group.code == 21) corner.at[1] = value;
            if (group.code == 31) corner.at[2] = value;
            if (group.code == 13) corner.miter[0] = value;
            if (group.code == 23) corner.miter[1] = value;
            if (group.code == 33) corner.miter[2] = value;
            if (group.code == 74) first = value > 0.0;
            if (group.code != 41 || !first) continue;
            corner.offsets.push_back(value);
            first = false;
        }
    }
    void readStyle(const std::optional<EntityRecord>& style) {
        if (!style) return;
        m_flags = style->integer(70);
        for (const host::GroupView& group : style->groups()) {
            if (group.code == 49) m_elements.emplace_back();
            if (group.code == 62 && m_elements.empty())
                m_fill = static_cast<int>(readInteger(group.value).value_or(kByLayer));
            if (m_elements.empty()) continue;
            const int number = static_cast<int>(readInteger(group.value).value_or(0));
            if (group.code == 62 && number != kByLayer && number != kByBlock)
                m_elements.back().colour = paletteColour(number);
            if (group.code == 420) m_elements.back().colour = number & kWhite;
            if (group.code == 6 && group.value != "BYLAYER" && group.value != "ByLayer" &&
                group.value != "BYBLOCK")
                m_elements.back().lineType = group.value;
        }
    }
    [[nodiscard]] Point spot(const Corner& corner, std::size_t line) const {
        const double offset = line < corner.offsets.size() ? corner.offsets[line] : 0.0;
        return m_pen.place(corner.at + offset * corner.miter);
    }
    [[nodiscard]] std::pair<std::size_t, std::size_t> outermost() const {
        const auto& offsets = m_corners.front().offsets;
        const auto [least, most] = std::ranges::minmax_element(offsets);
        return {static_cast<std::size_t>(least - offsets.begin()),
                static_cast<std::size_t>(most - offsets.begin())};
    }
    void fill(std::size_t lines) {
        if (lines < 2) return;
        const auto [low, high] = outermost();
        Path path = m_pen.path();
        for (const Corner& corner : m_corners) path.join(spot(corner, low));
        if (m_closed) {
            path.close();
            path.moveTo(spot(m_corners.back(), high));
        }
        const std::vector<Corner> back(m_corners.rbegin(), m_corners.rend());
        for (const Corner& corner : back) path.join(spot(corner, high));
        path.close();
        const bool own = m_fill != kByLayer && m_fill != kByBlock;
        m_pen.fill(path, m_pen.area(own ? paletteColour(m_fill) : m_pen.look().colour));
    }
    void cap(const Corner& end, const Corner& next, int square, int round) {
        const auto [low, high] = outermost();
        const Point from = spot(end, low);
        const Point to = spot(end, high);
        Path path = m_pen.path();
        if ((m_flags & square) != 0) {
            path.moveTo(from);
            path.lineTo(to);
        } else if ((m_flags & round) != 0) {
            // A half circle that turns away from the line.
            const Point middle = 0.5 * (from + to);
            const Point u = from - middle;
            const Point away = m_pen.place(end.at) - m_pen.place(next.at);
            Point v{-u[1], u[0], 0.0};
            if (v[0] * away[0] + v[1] * away[1] < 0.0) v = -1.0 * v;
            path.moveTo(from);
            path.along({middle, u, v}, 0.0, std::numbers::pi);
        }
        if (!path.empty()) m_pen.stroke(path);
    }

    Pencil& m_pen;
    std::vector<Corner> m_corners;
    std::vector<Element> m_elements;
    bool m_closed = false;
    int m_flags = 0;
    int m_fill = kByLayer;
};

}  // namespace

bool drawMultiline(Pencil& pen) { return Multiline(pen).draw(); }

}  // namespace mor::tool
