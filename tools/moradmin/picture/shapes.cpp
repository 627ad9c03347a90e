#include "tools/moradmin/picture/shapes.h"

#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

/// Capital letters are as high as the text's height; a font's size is more than that.
constexpr double kFontSize = 1.0 / 0.7;
/// How far letters reach below the base line, and about how wide they are, in heights.
constexpr double kBelow = 0.3;
constexpr double kLetterWidth = 0.85;
constexpr int kBackwards = 2;
constexpr int kUpsideDown = 4;

/// A smaller bulge is not seen, and its centre too far away to calculate with.
constexpr double kStraight = 1e-7;
/// Less than this counts as no turn, which means a whole one.
constexpr double kNoTurn = 1e-9;

/// The same turn between none and a whole one.
double turnTo(double turn, double whole) {
    const double rest = std::fmod(turn, whole);
    if (std::fabs(rest) < kNoTurn) return whole;
    return rest < 0.0 ? rest + whole : rest;
}

double radians(double degrees) { return degrees * (std::numbers::pi / 180.0); }

// How a text stands across, and up or down, from its point.
constexpr int kRight = 2;
constexpr int kBetween = 3;  ///< stretched between its two points, as high as it comes
constexpr int kCentred = 4;
constexpr int kFitted = 5;  ///< between them too, with its own height
constexpr int kBottom = 1;
constexpr int kMiddle = 2;
constexpr int kTop = 3;

/// By which of its points a text stands, and where from there.
struct TextStand {
    explicit TextStand(const EntityRecord& text)
        : across(text.integer(72)),
          // Of attributes this is another group than of texts.
          down(text.integer(text.type() == "TEXT" ? 73 : 74)),
          second(text.point(11)),
          stretched((across == kBetween || across == kFitted) && second),
          aligned(isAligned(text)) {}

    [[nodiscard]] std::string_view anchor() const {
        if (!aligned || across == 0 || across == kBetween || across == kFitted) return "start";
        return across == kRight ? "end" : "middle";
    }
    [[nodiscard]] double drop(double height) const {
        if (!aligned) return 0.0;
        if (across == kCentred || down == kMiddle) return height / 2;
        if (down == kTop) return height;
        return down == kBottom ? -kBelow * height : 0.0;
    }

    int across;
    int down;
    std::optional<Point> second;
    bool stretched;
    bool aligned;
};

class Shaper {
public:
    Shaper(const EntityRecord& record, const CMORMathTransMatrix& placement, const Point& origin)
        : m_record(record), m_placement(placement), m_origin(origin), m_outline(origin) {}

    std::optional<Shape> line() {
        const auto from = m_record.point(10);
        const auto to = m_record.point(11);
        if (!from || !to) return std::nullopt;
        m_outline.moveTo(transformed(m_placement, *from));
        m_outline.lineTo(transformed(m_placement, *to));
        return drawn(Shape::Kind::Line);
    }

    std::optional<Shape> dot() {
        const auto at = m_record.point(10);
        if (!at) return std::nullopt;
        m_outline.moveTo(transformed(m_placement, *at));
        m_outline.lineTo(transformed(m_placement, *at));
        return drawn(Shape::Kind::Dot);
    }

    std::optional<Shape> area() {
        const host::PlaneAxes axes = m_record.plane();
        // The last two corners stand crosswise; a missing last one repeats the third.
        const auto corner = [&](int code) { return m_record.point(code); };
        if (!corner(10) || !corner(11) || !corner(12)) return std::nullopt;
        const Point points[] = {*corner(10), *corner(11), corner(13).value_or(*corner(12)),
                                *corner(12)};
        for (const Point& point : points) join(transformed(m_placement, fromPlane(axes, point)));
        m_outline.close();
        return drawn(Shape::Kind::Area);
    }

    std::optional<Shape> circle() {
        if (!m_record.point(10)) return std::nullopt;
        m_outline.along(curveInPlane(), 0.0, 2 * std::numbers::pi);
        m_outline.close();
        return drawn(Shape::Kind::Line);
    }

    std::optional<Shape> arc() {
        if (!m_record.point(10)) return std::nullopt;
        const double from = std::fmod(m_record.real(50), 360.0);
        const double to = from + turnTo(m_record.real(51) - from, 360.0);
        m_outline.along(curveInPlane(), radians(from), radians(to));
        return drawn(Shape::Kind::Line);
    }

    std::optional<Shape> ellipse() {
        const auto centre = m_record.point(10);
        const auto major = m_record.point(11);
        if (!centre || !major) return std::nullopt;
        const Point minor = m_record.real(40, 1.0) * cross(m_record.plane()[2], *major);
        constexpr double kWhole = 2 * std::numbers::pi;
        const double from = std::fmod(m_record.real(41), kWhole);
        const double span = turnTo(m_record.real(42, kWhole) - from, kWhole);
        m_outline.along(placed({*centre, *major, minor}), from, from + span);
        if (span > kWhole - kNoTurn) m_outline.close();
        return drawn(Shape::Kind::Line);
    }

    std::optional<Shape> polyline(const std::vector<Vertex>& vertices, bool spatial) {
        if (vertices.empty()) return std::nullopt;
        const host::PlaneAxes axes = spatial ? host::planeAxes({}) : m_record.plane();
        const auto place = [&](const Point& point) {
            return transformed(m_placement, fromPlane(axes, point));
        };
        const bool closed = isClosed(m_record);
        m_outline.moveTo(place(vertices.front().at));
        const std::size_t sides = vertices.size() - (closed ? 0 : 1);
        for (std::size_t i = 0; i < sides; ++i) {
            const Vertex& from = vertices[i];
            const Point& to = vertices[(i + 1) % vertices.size()].at;
            if (std::fabs(from.bulge) < kStraight || (to[0] == from.at[0] && to[1] == from.at[1]))
                m_outline.lineTo(place(to));
            else
                bulge(from, to, axes);
        }
        if (closed) m_outline.close();
        return drawn(Shape::Kind::Line);
    }

    std::optional<Shape> text() {
        Shape shape;
        shape.kind = Shape::Kind::Text;
        shape.data = shownText(m_record.text(1));
        const double height = m_record.real(40);
        const auto first = m_record.point(10);
        if (!first || height <= 0.0 || shape.data.empty()) return std::nullopt;
        const TextStand stand(m_record);
        auto [sine, cosine] = host::sineAndCosine(m_record.real(50));
        const Point way = stand.stretched ? *stand.second - *first : Point{};
        const double length = std::hypot(way[0], way[1]);
        if (length > 0.0) std::tie(sine, cosine) = std::pair(way[1] / length, way[0] / length);
        const double slant = std::tan(radians(m_record.real(51)));
        const int mirrored = m_record.integer(71);
        const double widened = m_record.real(41, 1.0) * ((mirrored & kBackwards) != 0 ? -1.0 : 1.0);
        const double upright = (mirrored & kUpsideDown) != 0 ? -1.0 : 1.0;
        const Point right{cosine, sine, 0.0};
        const Point up{slant * right[0] - right[1], slant * right[1] + right[0], 0.0};
        const host::PlaneAxes axes = m_record.plane();
        shape.right = widened * turned(m_placement, fromPlane(axes, right));
        shape.down = -upright * turned(m_placement, fromPlane(axes, up));
        const Point at = stand.aligned ? *stand.second : *first;
        shape.at = transformed(m_placement, fromPlane(axes, at)) - m_origin;
        shape.size = height * kFontSize;
        shape.anchor = stand.anchor();
        shape.drop = stand.drop(height);
        if (stand.stretched && stand.across == kFitted && widened != 0.0)
            shape.width = length / std::fabs(widened);
        if (!isInRange(shape)) return std::nullopt;
        includeText(shape, height);
        return shape;
    }

private:
    void join(const Point& point) {
        if (m_outline.data().empty())
            m_outline.moveTo(point);
        else
            m_outline.lineTo(point);
    }

    [[nodiscard]] Curve placed(const Curve& curve) const {
        return {transformed(m_placement, curve.centre), turned(m_placement, curve.u),
                turned(m_placement, curve.v)};
    }

    [[nodiscard]] Curve curveInPlane() const {
        const host::PlaneAxes axes = m_record.plane();
        const double radius = m_record.real(40);
        return placed({fromPlane(axes, *m_record.point(10)), radius * axes[0], radius * axes[1]});
    }

    /// An arc to the next vertex; the angle that it spans is four times the bulge's arc tangent.
    void bulge(const Vertex& from, const Point& to, const host::PlaneAxes& axes) {
        const Point chord = to - from.at;
        const double b = from.bulge;
        const Point across{-chord[1], chord[0], 0.0};
        const Point centre = 0.5 * (from.at + to) + ((1.0 - b * b) / (4.0 * b)) * across;
        const double radius = std::hypot(from.at[0] - centre[0], from.at[1] - centre[1]);
        const double begin = std::atan2(from.at[1] - centre[1], from.at[0] - centre[0]);
        const Point level{centre[0], centre[1], from.at[2]};
        m_outline.along(placed({fromPlane(axes, level), radius * axes[0], radius * axes[1]}), begin,
                        begin + 4.0 * std::atan(b));
    }

    [[nodiscard]] std::optional<Shape> drawn(Shape::Kind kind) const {
        if (!m_outline.isFinite()) return std::nullopt;
        Shape shape;
        shape.kind = kind;
        shape.data = m_outline.data();
        shape.extent = m_outline.extent();
        return shape;
    }

    static bool isInRange(const Shape& text) {
        return isWithin(text.right, kFarthest) && isWithin(text.down, kFarthest) &&
               isWithin(text.at, kFarthest) && text.size <= kFarthest && text.width <= kFarthest;
    }

    /// About the place that a text takes.
    static void includeText(Shape& shape, double height) {
        const auto letters = static_cast<double>(characterCount(shape.data));
        const double width = shape.width > 0.0 ? shape.width : letters * height * kLetterWidth;
        const double begin = shape.anchor == "start" ? 0.0
                             : shape.anchor == "end" ? -width
                                                     : -width / 2;
        for (const double x : {begin, begin + width})
            for (const double y : {shape.drop - height, shape.drop + kBelow * height}) {
                const Point corner = shape.at + x * shape.right + y * shape.down;
                shape.extent.include(corner[0], corner[1]);
            }
    }

    const EntityRecord& m_record;
    const CMORMathTransMatrix& m_placement;
    const Point& m_origin;
    Outline m_outline;
};

}  // namespace

std::optional<Shape> shapeOf(const AcApDocument* document, mor::EntityName name,
                             const EntityRecord& record, const CMORMathTransMatrix& placement,
                             const Point& origin, std::size_t& read) {
    Shaper shaper(record, placement, origin);
    const std::string& type = record.type();
    if (type == "LINE") return shaper.line();
    if (type == "POINT") return shaper.dot();
    if (type == "SOLID" || type == "TRACE") return shaper.area();
    if (type == "CIRCLE") return shaper.circle();
    if (type == "ARC") return shaper.arc();
    if (type == "ELLIPSE") return shaper.ellipse();
    if (type == "TEXT" || type == "ATTRIB") return shaper.text();
    if (type == "LWPOLYLINE") return shaper.polyline(verticesOf(record), false);
    if (type == "POLYLINE" && !isMesh(record))
        return shaper.polyline(verticesBehind(document, name, record, read), isSpatial(record));
    return std::nullopt;
}

std::string shownText(const std::string& text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool code = text.compare(i, 2, "%%") == 0 && i + 2 < text.size();
        if (!code) {
            if (static_cast<unsigned char>(text[i]) >= 0x20) shown += text[i];
            continue;
        }
        const char letter = text[i + 2];
        i += 2;
        switch (letter) {
            case 'd':
            case 'D':
                shown += "\u00B0";
                break;
            case 'p':
            case 'P':
                shown += "\u00B1";
                break;
            case 'c':
            case 'C':
                shown += "\u00D8";
                break;
            case '%':
                shown += '%';
                break;
            case 'u':
            case 'U':
            case 'o':
            case 'O':
                break;  // lines under and over are not drawn
            default: {
                const std::string digits = text.substr(i, 3);
                const auto number = digits.size() == 3 ? readReal(digits) : std::nullopt;
                if (number && *number >= 0x20 && *number < 256) {
                    shown += utf8(std::wstring(1, static_cast<wchar_t>(*number)));
                    i += 2;
                } else {
                    shown += std::string("%%") + letter;
                }
            }
        }
    }
    return shown;
}

}  // namespace mor::tool
