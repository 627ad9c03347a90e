#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace mor::tool {

namespace {

// Flags of a boundary.
constexpr int kExternal = 1;
constexpr int kPolyline = 2;
constexpr int kOutermost = 16;
// Styles of islands.
constexpr int kOuterOnly = 1;
constexpr int kIgnored = 2;
/// A pattern of more lines is shown as a light area: one could not tell them apart.
constexpr std::size_t kMostLines = 2000;
constexpr std::size_t kMostDashes = 20'000;
constexpr double kMostCuts = 5e7;  ///< lines by sides of the area
constexpr float kLight = 0.35F;
constexpr double kWhole = 2 * std::numbers::pi;

/// Goes through the groups of a record from where its boundaries begin.
class Groups {
public:
    explicit Groups(const std::vector<host::GroupView>& groups) : m_groups(groups) {}

    [[nodiscard]] bool ended() const { return m_at >= m_groups.size(); }
    [[nodiscard]] int code() const { return ended() ? -1 : m_groups[m_at].code; }
    /// The value of a group that is to stand here; 0, and nothing passed, where it does not.
    double take(int wanted, double missing = 0.0) {
        if (code() != wanted) return missing;
        return readReal(m_groups[m_at++].value).value_or(missing);
    }
    Spot takeSpot(int wanted) {
        const double x = take(wanted);
        return {x, take(wanted + 10)};
    }
    bool find(int wanted) {
        while (!ended() && code() != wanted) ++m_at;
        return !ended();
    }
    void pass() { ++m_at; }

private:
    const std::vector<host::GroupView>& m_groups;
    std::size_t m_at = 0;
};

struct PatternLine {
    double angle = 0.0;  ///< degrees
    Spot base;
    Spot offset;
    std::vector<double> dashes;
};

/// Reads boundaries into a path, and a pattern.
class HatchReader {
public:
    explicit HatchReader(Pencil& pen)
        : m_pen(pen), m_groups(pen.record().groups()), m_axes(pen.record().plane()) {
        // The first point stands for the height of the plane.
        m_height = pen.record().real(30);
    }

    bool read() {
        const int style = m_pen.record().integer(75);
        if (!m_groups.find(91)) return false;
        const auto count = static_cast<int>(m_groups.take(91));
        for (int i = 0; i < count && m_groups.find(92); ++i) {
            const auto flags = static_cast<int>(m_groups.take(92));
            m_part = m_pen.path();
            if ((flags & kPolyline) != 0)
                readPolyline();
            else
                readEdges();
            const bool outer = (flags & kExternal) != 0;
            const bool shown = style == kIgnored     ? outer || count == 1
                               : style == kOuterOnly ? outer || (flags & kOutermost) != 0
                                                     : true;
            if (shown || !m_any) keep(shown);
        }
        return m_any;
    }

    [[nodiscard]] const Path& path() const { return m_path; }

    std::vector<PatternLine> readPattern() {
        std::vector<PatternLine> lines;
        if (!m_groups.find(78)) return lines;
        const auto count = static_cast<int>(m_groups.take(78));
        for (int i = 0; i < count && m_groups.find(53); ++i) {
            PatternLine line;
            line.angle = m_groups.take(53);
            const double x = m_groups.take(43);
            line.base = {x, m_groups.take(44)};
            const double dx = m_groups.take(45);
            line.offset = {dx, m_groups.take(46)};
            const auto dashes = static_cast<int>(m_groups.take(79));
            for (int k = 0; k < dashes && m_groups.code() == 49; ++k)
                line.dashes.push_back(m_groups.take(49));
            lines.push_back(std::move(line));
        }
        return lines;
    }

    [[nodiscard]] Point spot(double x, double y) const {
        return m_pen.place(fromPlane(m_axes, {x, y, m_height}));
    }

private:
    /// A boundary that does not count is kept only until one does.
    void keep(bool shown) {
        if (m_part.empty()) return;
        if (m_any && !m_sure) m_path = m_pen.path();
        m_sure = m_sure || shown;
        m_any = true;
        m_path.append(m_part);
    }
    void readPolyline() {
        const bool bulges = m_groups.take(72) != 0.0;
        static_cast<void>(m_groups.take(73));
        const auto count = static_cast<int>(m_groups.take(93));
        std::vector<Vertex> vertices;
        for (int i = 0; i < count && m_groups.code() == 10; ++i) {
            const Spot at = m_groups.takeSpot(10);
            vertices.push_back({{at.x, at.y, m_height}, bulges ? m_groups.take(42) : 0.0});
        }
        if (vertices.empty()) return;
        m_part.moveTo(spot(vertices[0].at[0], vertices[0].at[1]));
        for (std::size_t i = 0; i < vertices.size(); ++i)
            bulgeTo(m_part, m_pen, vertices[i], vertices[(i + 1) % vertices.size()].at, m_axes);
        m_part.close();
    }

    void readEdges() {
        const auto count = static_cast<int>(m_groups.take(93));
        for (int i = 0; i < count && m_groups.code() == 72; ++i)
            switch (static_cast<int>(m_groups.take(72))) {
                case 1:
                    readLine();
                    break;
                case 2:
                    readArc();
                    break;
                case 3:
                    readEllipse();
                    break;
                case 4:
                    readSpline();
                    break;
                default:
                    break;
            }
        if (!m_part.empty()) m_part.close();
    }
    void readLine() {
        const Spot from = m_groups.takeSpot(10);
        const Spot to = m_groups.takeSpot(11);
        m_part.join(spot(from.x, from.y));
        m_part.lineTo(spot(to.x, to.y));
    }
    void readArc() {
        const Spot centre = m_groups.takeSpot(10);
        const double radius = m_groups.take(40);
        double from = radians(m_groups.take(50));
        double to = radians(m_groups.take(51));
        const bool forwards = m_groups.take(73, 1.0) != 0.0;
        if (!forwards) from = -from, to = -to;
        curve(centre, {radius, 0.0}, {0.0, radius}, from, to, forwards);
    }
    void readEllipse() {
        const Spot centre = m_groups.takeSpot(10);
        const Spot major = m_groups.takeSpot(11);
        const double ratio = m_groups.take(40, 1.0);
        double from = radians(m_groups.take(50));
        double to = radians(m_groups.take(51));
        const bool forwards = m_groups.take(73, 1.0) != 0.0;
        if (!forwards) from = -from, to = -to;
        curve(centre, major, {-ratio * major.y, ratio * major.x}, from, to, forwards);
    }
    void curve(Spot centre, Spot u, Spot v, double from, double to, bool forwards) {
        from = std::fmod(from, kWhole);
        to = forwards ? from + turnTo(to - from, kWhole) : from - turnTo(from - to, kWhole);
        const Curve placed = m_pen.place(Curve{fromPlane(m_axes, {centre.x, centre.y, m_height}),
                                               fromPlane(m_axes, {u.x, u.y, 0.0}),
                                               fromPlane(m_axes, {v.x, v.y, 0.0})});
        m_part.join(placed.at(from));
        m_part.along(placed, from, to);
    }
    void readSpline() {
        const auto degree = static_cast<int>(m_groups.take(94, 3.0));
        static_cast<void>(m_groups.take(73));
        static_cast<void>(m_groups.take(74));
        static_cast<void>(m_groups.take(95));
        static_cast<void>(m_groups.take(96));
        std::vector<double> knots;
        std::vector<double> weights;
        std::vector<Point> controls;
        std::vector<Point> fits;
        while (m_groups.code() == 40) knots.push_back(m_groups.take(40));
        while (m_groups.code() == 10) {
            const Spot at = m_groups.takeSpot(10);
            controls.push_back({at.x, at.y, m_height});
            if (m_groups.code() == 42) weights.push_back(m_groups.take(42));
        }
        if (m_groups.code() == 97) m_groups.pass();
        while (m_groups.code() == 11) {
            const Spot at = m_groups.takeSpot(11);
            fits.push_back({at.x, at.y, m_height});
        }
        for (const int tangent : {12, 13})
            if (m_groups.code() == tangent) static_cast<void>(m_groups.takeSpot(tangent));
        std::vector<Point> points = splinePoints(degree, knots, controls, weights);
        if (points.empty()) points = curveThrough(fits.empty() ? controls : fits, false);
        for (const Point& point : points) m_part.join(m_pen.place(fromPlane(m_axes, point)));
    }

    Pencil& m_pen;
    Groups m_groups;
    host::PlaneAxes m_axes;
    double m_height = 0.0;
    Path m_part;
    Path m_path = m_pen.path();
    bool m_any = false;
    bool m_sure = false;
};

/// Draws the lines of a pattern within an area.
class Pattern {
public:
    Pattern(Pencil& pen, const HatchReader& reader) : m_pen(pen), m_reader(reader) {
        m_parts = flattened(reader.path().ops(), reader.path().numbers().data());
        const Point& shift = pen.desk().scene.shift();
        for (auto& part : m_parts)
            for (Spot& spot : part) spot = {spot.x + shift[0], spot.y + shift[1]};
    }

    /// False when there are too many lines to tell them apart.
    bool draw(const std::vector<PatternLine>& lines) {
        Path path = m_pen.path();
        for (const PatternLine& line : lines)
            if (!drawFamily(line, path)) return false;
        Style style = m_pen.line(m_pen.look().colour, nullptr);
        style.flat = false;
        if (!path.empty()) m_pen.stroke(path, style);
        return true;
    }

private:
    /// One family of parallel lines. Everything is turned so that they are level.
    bool drawFamily(const PatternLine& line, Path& path) {
        const double angle = radians(line.angle);
        const Point base = m_reader.spot(line.base.x, line.base.y);
        const Point along =
            m_reader.spot(line.base.x + std::cos(angle), line.base.y + std::sin(angle)) - base;
        const Point step =
            m_reader.spot(line.base.x + line.offset.x, line.base.y + line.offset.y) - base;
        m_unit = std::hypot(along[0], along[1]);
        if (!(m_unit > 0.0)) return true;
        m_cosine = along[0] / m_unit;
        m_sine = along[1] / m_unit;
        m_base = {base[0], base[1]};
        const double pitch = -step[0] * m_sine + step[1] * m_cosine;
        const double slide = step[0] * m_cosine + step[1] * m_sine;
        if (!(std::fabs(pitch) > 0.0)) return true;
        std::vector<std::vector<Spot>> parts = m_parts;
        double least = kFarthest;
        double most = -kFarthest;
        for (auto& part : parts)
            for (Spot& spot : part) {
                spot = turned(spot);
                least = std::min(least, spot.y);
                most = std::max(most, spot.y);
            }
        const double begin = std::min(least / pitch, most / pitch);
        const double end = std::max(least / pitch, most / pitch);
        if (!(end - begin < static_cast<double>(kMostLines))) return false;
        std::size_t sides = 0;
        for (const auto& part : parts) sides += part.size();
        if ((end - begin) * static_cast<double>(sides) > kMostCuts) return false;
        const double first = std::ceil(begin);
        const auto rows = static_cast<int>(std::floor(end - first)) + 1;
        for (int row = 0; row < rows; ++row) {
            const double number = first + row;
            if (!drawRow(parts, number * pitch, number * slide, line.dashes, path)) return false;
        }
        return true;
    }

    [[nodiscard]] Spot turned(const Spot& spot) const {
        const double x = spot.x - m_base.x;
        const double y = spot.y - m_base.y;
        return {x * m_cosine + y * m_sine, -x * m_sine + y * m_cosine};
    }
    [[nodiscard]] Point back(double x, double y) const {
        return {m_base.x + x * m_cosine - y * m_sine, m_base.y + x * m_sine + y * m_cosine, 0.0};
    }

    /// One line: where it is within the area it is drawn, by its dashes.
    bool drawRow(const std::vector<std::vector<Spot>>& parts, double y, double slide,
                 const std::vector<double>& dashes, Path& path) {
        std::vector<double> crossings;
        for (const auto& part : parts)
            for (std::size_t i = 0; i < part.size(); ++i) {
                const Spot& a = part[i];
                const Spot& b = part[(i + 1) % part.size()];
                if ((a.y <= y) == (b.y <= y)) continue;
                crossings.push_back(a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y));
            }
        std::ranges::sort(crossings);
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
            if (!drawSpan(crossings[i], crossings[i + 1], y, slide, dashes, path)) return false;
        return true;
    }

    bool drawSpan(double from, double to, double y, double slide, const std::vector<double>& dashes,
                  Path& path) {
        double period = 0.0;
        for (const double dash : dashes) period += std::fabs(dash) * m_unit;
        if (!(period > 0.0)) {
            line(from, to, y, path);
            return ++m_drawn < kMostDashes;
        }
        double at = slide + std::floor((from - slide) / period) * period;
        if (!((to - at) / period * static_cast<double>(dashes.size()) < kMostDashes)) return false;
        while (at < to)
            for (const double dash : dashes) {
                const double end = at + std::fabs(dash) * m_unit;
                const double first = std::max(at, from);
                const double last = std::min(end, to);
                if (dash > 0.0 ? first < last : dash == 0.0 && first <= last) {
                    line(first, last, y, path);
                    if (++m_drawn >= kMostDashes) return false;
                }
                at = end;
            }
        return true;
    }
    void line(double from, double to, double y, Path& path) const {
        path.moveTo(back(from, y));
        path.lineTo(back(to, y));
    }

    Pencil& m_pen;
    const HatchReader& m_reader;
    std::vector<std::vector<Spot>> m_parts;
    Spot m_base;
    double m_cosine = 1.0;
    double m_sine = 0.0;
    double m_unit = 1.0;
    std::size_t m_drawn = 0;
};

/// The mean of the colours of a gradient; nothing where there is none.
std::optional<int> gradientColour(const EntityRecord& record) {
    if (record.integer(450) == 0) return std::nullopt;
    std::array<int, 3> sums{};
    int count = 0;
    for (const host::GroupView& group : record.groups()) {
        if (group.code != 421) continue;
        const auto rgb = static_cast<int>(readInteger(group.value).value_or(0)) & kWhite;
        sums[0] += rgb / 0x10000;
        sums[1] += rgb / 0x100 % 0x100;
        sums[2] += rgb % 0x100;
        ++count;
    }
    if (count == 0) return std::nullopt;
    int mean = 0;
    for (const int sum : sums) mean = mean * 0x100 + sum / count;
    return mean;
}

}  // namespace

bool drawHatch(Pencil& pen) {
    HatchReader reader(pen);
    if (!reader.read()) return false;
    const EntityRecord& record = pen.record();
    if (const auto mean = gradientColour(record)) {
        pen.fill(reader.path(), pen.area(*mean));
        return true;
    }
    if (record.integer(70) != 0) {
        pen.fill(reader.path());
        return true;
    }
    const std::vector<PatternLine> lines = reader.readPattern();
    if (!lines.empty() && Pattern(pen, reader).draw(lines)) return true;
    Style light = pen.area();
    light.opacity *= kLight;
    pen.fill(reader.path(), light);
    return true;
}

}  // namespace mor::tool
