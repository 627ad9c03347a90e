#include "tools/moradmin/picture/characters.h"
#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <string_view>

namespace mor::tool {

namespace {

/// The kinds of things in a preview, by their numbers.
enum class Kind : std::uint32_t {
    Circle = 2,
    CircleOfThree = 3,
    Arc = 4,
    ArcOfThree = 5,
    Polyline = 6,
    Polygon = 7,
    Grid = 8,
    Shell = 9,
    Text = 10,
    StyledText = 11,
    Line = 12,
    Ray = 13,
    Colour = 14,
    Fill = 20,
    TrueColour = 22,
    Matrix = 29,
    OtherMatrix = 30,
    MatrixEnd = 31,
    PolylineOfNormal = 32,
    WideText = 36,
    StyledWideText = 38
};

constexpr std::size_t kHead = 8;
constexpr double kWhole = 2 * std::numbers::pi;
constexpr std::uint32_t kMostVertices = 1'000'000;

/// Reads bytes one after the other; behind the end everything is 0.
class Bytes {
public:
    explicit Bytes(std::string_view data) : m_data(data) {}

    [[nodiscard]] bool failed() const { return m_failed; }
    std::uint32_t word() { return value<std::uint32_t>(); }
    double real() { return value<double>(); }
    Point point() {
        const double x = real();
        const double y = real();
        return {x, y, real()};
    }
    std::string text() {
        const std::size_t end = std::min(m_data.find('\0', m_at), m_data.size());
        std::string text(m_data.substr(m_at, end - m_at));
        pass(end + 1);
        return text;
    }
    /// Two bytes for a character.
    std::string wideText() {
        std::u32string text;
        std::size_t at = m_at;
        for (; at + 1 < m_data.size(); at += 2) {
            const auto low = static_cast<unsigned char>(m_data[at]);
            const auto high = static_cast<unsigned char>(m_data[at + 1]);
            if (low == 0 && high == 0) break;
            text += static_cast<char32_t>(low + high * 0x100U);
        }
        pass(at + 2);
        return utf8Of(text);
    }

private:
    template <typename T>
    T value() {
        T result{};
        if (m_data.size() - m_at < sizeof result) {
            m_failed = true;
            return result;
        }
        std::memcpy(&result, m_data.data() + m_at, sizeof result);
        m_at += sizeof result;
        return result;
    }
    /// Texts are filled up to whole words.
    void pass(std::size_t end) { m_at = std::min((end + 3) / 4 * 4, m_data.size()); }

    std::string_view m_data;
    std::size_t m_at = 0;
    bool m_failed = false;
};

int hexDigit(char c) {
    const auto at = std::string_view("0123456789ABCDEF")
                        .find(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    return at == std::string_view::npos ? 0 : static_cast<int>(at);
}

/// The bytes that a record keeps of its look, for programs that do not know its kind.
std::string previewOf(const EntityRecord& record) {
    std::string bytes;
    bool within = false;
    for (const host::RecordGroup& group : record.groups()) {
        if (group.code == 160 || group.code == 92) {
            within = bytes.empty();
            continue;
        }
        if (group.code != 310) within = false;
        if (group.code == 100 && group.value != "AcDbEntity") break;
        if (!within) continue;
        for (std::size_t i = 0; i + 1 < group.value.size(); i += 2)
            bytes +=
                static_cast<char>(hexDigit(group.value[i]) * 16 + hexDigit(group.value[i + 1]));
    }
    return bytes;
}

class Preview {
public:
    explicit Preview(Pencil& pen) : m_pen(pen), m_colour(pen.look().colour) {}

    bool draw(std::string_view data) {
        for (std::size_t at = kHead; at + kHead <= data.size();) {
            Bytes head(data.substr(at, kHead));
            const std::uint32_t size = head.word();
            const std::uint32_t kind = head.word();
            if (size < kHead || size > data.size() - at) break;
            Bytes bytes(data.substr(at + kHead, size - kHead));
            at += size;
            if (!changeState(static_cast<Kind>(kind), bytes))
                drawThing(static_cast<Kind>(kind), bytes);
        }
        return m_drawn;
    }

private:
    [[nodiscard]] CMORMathTransMatrix placement() const {
        return m_matrices.empty() ? m_pen.placement()
                                  : product(m_pen.placement(), m_matrices.back());
    }
    [[nodiscard]] Point place(const Point& point) const { return transformed(placement(), point); }
    [[nodiscard]] Curve place(const Curve& curve) const {
        const CMORMathTransMatrix matrix = placement();
        return {transformed(matrix, curve.centre), turned(matrix, curve.u),
                turned(matrix, curve.v)};
    }

    bool changeState(Kind kind, Bytes& bytes) {
        switch (kind) {
            case Kind::Colour:
                m_colour = numbered(static_cast<int>(bytes.word()));
                return true;
            case Kind::TrueColour:
                m_colour =
                    packedColour(static_cast<int>(bytes.word())).value_or(m_pen.look().colour);
                return true;
            case Kind::Fill:
                m_fill = bytes.word() != 0;
                return true;
            case Kind::Matrix:
            case Kind::OtherMatrix:
                pushMatrix(bytes);
                return true;
            case Kind::MatrixEnd:
                if (!m_matrices.empty()) m_matrices.pop_back();
                return true;
            default:
                return false;
        }
    }
    [[nodiscard]] int numbered(int number) const {
        return number < 1 || number >= kByLayer ? m_pen.look().colour : paletteColour(number);
    }
    void pushMatrix(Bytes& bytes) {
        CMORMathTransMatrix matrix;
        for (auto& row : matrix.rows)
            for (double& number : row) number = bytes.real();
        m_matrices.push_back(m_matrices.empty() ? matrix : product(m_matrices.back(), matrix));
    }

    void drawThing(Kind kind, Bytes& bytes) {
        switch (kind) {
            case Kind::Circle:
                return circle(bytes);
            case Kind::Arc:
                return arc(bytes);
            case Kind::CircleOfThree:
            case Kind::ArcOfThree:
                return ofThree(bytes, kind == Kind::CircleOfThree);
            case Kind::Polyline:
            case Kind::PolylineOfNormal:
            case Kind::Polygon:
                return polyline(bytes, kind == Kind::Polygon);
            case Kind::Grid:
                return grid(bytes);
            case Kind::Shell:
                return shell(bytes);
            case Kind::Text:
            case Kind::WideText:
            case Kind::StyledText:
            case Kind::StyledWideText:
                return text(bytes, kind);
            case Kind::Line:
            case Kind::Ray:
                return ray(bytes, kind == Kind::Line);
            default:
                return;
        }
    }

    void stroke(const Path& path) {
        if (path.empty()) return;
        m_pen.stroke(path, m_pen.line(m_colour, m_pen.look().lineType));
        m_drawn = true;
    }
    void whole(const Curve& curve) {
        Path path = m_pen.path();
        path.along(place(curve), 0.0, kWhole);
        path.close();
        stroke(path);
    }
    void circle(Bytes& bytes) {
        const Point centre = bytes.point();
        const double radius = bytes.real();
        const host::PlaneAxes axes = host::planeAxes(bytes.point());
        if (!bytes.failed()) whole({centre, radius * axes[0], radius * axes[1]});
    }
    void arc(Bytes& bytes) {
        const Point centre = bytes.point();
        const double radius = bytes.real();
        const Point normal = host::planeAxes(bytes.point())[2];
        const Point start = bytes.point();
        const double sweep = bytes.real();
        const double length = std::hypot(start[0], start[1], start[2]);
        if (bytes.failed() || !(length > 0.0)) return;
        const Point u = (radius / length) * start;
        Path path = m_pen.path();
        path.along(place(Curve{centre, u, cross(normal, u)}), 0.0, sweep);
        stroke(path);
    }
    /// Through three points, the second one between the others.
    void ofThree(Bytes& bytes, bool closed) {
        const Point a = bytes.point();
        const Point b = bytes.point();
        const Point c = bytes.point();
        const double area = 2.0 * ((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]));
        if (bytes.failed() || area == 0.0) return;
        const auto square = [&a](const Point& p) {
            return (p[0] - a[0]) * (p[0] - a[0]) + (p[1] - a[1]) * (p[1] - a[1]);
        };
        const Point centre{a[0] + ((c[1] - a[1]) * square(b) - (b[1] - a[1]) * square(c)) / area,
                           a[1] + ((b[0] - a[0]) * square(c) - (c[0] - a[0]) * square(b)) / area,
                           a[2]};
        const double radius = std::hypot(a[0] - centre[0], a[1] - centre[1]);
        const Curve curve{centre, {radius, 0.0, 0.0}, {0.0, radius, 0.0}};
        if (closed) return whole(curve);
        const double from = std::atan2(a[1] - centre[1], a[0] - centre[0]);
        const double to = std::atan2(c[1] - centre[1], c[0] - centre[0]);
        Path path = m_pen.path();
        const double forwards = turnTo(to - from, kWhole);
        path.along(place(curve), from, area > 0.0 ? from + forwards : from + forwards - kWhole);
        stroke(path);
    }

    std::vector<Point> vertices(Bytes& bytes, std::uint32_t count) {
        std::vector<Point> points;
        for (std::uint32_t i = 0; i < std::min(count, kMostVertices) && !bytes.failed(); ++i)
            points.push_back(bytes.point());
        if (bytes.failed()) points.clear();
        return points;
    }
    void polyline(Bytes& bytes, bool closed) {
        Path path = m_pen.path();
        const std::vector<Point> points = vertices(bytes, bytes.word());
        for (const Point& point : points) path.join(place(point));
        if (points.size() == 1) path.lineTo(place(points[0]));
        const bool fill = m_fill && points.size() > 2;
        m_fill = false;
        if (path.empty()) return;
        if (closed || fill) path.close();
        if (!fill) return stroke(path);
        m_pen.fill(path, m_pen.area(m_colour));
        m_drawn = true;
    }
    void grid(Bytes& bytes) {
        const std::uint32_t rows = bytes.word();
        const std::uint32_t columns = bytes.word();
        if (rows > kMostVertices || columns > kMostVertices) return;
        const std::vector<Point> points = vertices(bytes, rows * columns);
        if (points.size() != std::size_t{rows} * columns) return;
        Path path = m_pen.path();
        for (std::size_t i = 0; i < points.size(); ++i)
            for (const std::size_t next : {i + 1, i + columns}) {
                const bool sameRow = next == i + 1;
                if (next >= points.size() || (sameRow && next % columns == 0)) continue;
                path.moveTo(place(points[i]));
                path.lineTo(place(points[next]));
            }
        stroke(path);
    }
    void shell(Bytes& bytes) {
        const std::vector<Point> points = vertices(bytes, bytes.word());
        const std::uint32_t entries = bytes.word();
        Path path = m_pen.path();
        for (std::uint32_t read = 0; read < entries && !bytes.failed();) {
            // Below 0 for a hole.
            const std::uint32_t corners = bytes.word();
            const std::uint32_t count = std::min(corners, 0U - corners);
            read += 1 + count;
            for (std::uint32_t i = 0; i < count && !bytes.failed(); ++i) {
                const std::uint32_t number = bytes.word();
                if (number >= points.size()) return;
                i == 0 ? path.moveTo(place(points[number])) : path.lineTo(place(points[number]));
            }
            if (count > 0) path.close();
        }
        stroke(path);
    }

    void text(Bytes& bytes, Kind kind) {
        const bool wide = kind == Kind::WideText || kind == Kind::StyledWideText;
        const bool styled = kind == Kind::StyledText || kind == Kind::StyledWideText;
        const Point at = bytes.point();
        const Point normal = host::planeAxes(bytes.point())[2];
        const Point direction = bytes.point();
        TextFormat format;
        std::string shown;
        const auto read = [&] { shown = wide ? bytes.wideText() : bytes.text(); };
        if (styled) {
            read();
            static_cast<void>(bytes.word());  // how long it is
            static_cast<void>(bytes.word());
        }
        format.height = bytes.real();
        format.widened = bytes.real();
        format.oblique = bytes.real() * 180.0 / std::numbers::pi;
        if (styled)
            readStyle(bytes, kind, format);
        else
            read();
        const double length = std::hypot(direction[0], direction[1], direction[2]);
        if (shown.empty() || !(length > 0.0) || !(format.height > 0.0)) return;
        format.colour = m_colour;
        const Point right = (1.0 / length) * direction;
        const CMORMathTransMatrix matrix = placement();
        m_pen.letters(
            {transformed(matrix, at), turned(matrix, right), turned(matrix, cross(normal, right))},
            0.0, 0.0, shown, format);
        m_drawn = true;
    }
    static void readStyle(Bytes& bytes, Kind kind, TextFormat& format) {
        static_cast<void>(bytes.real());                              // tracking
        for (int i = 0; i < 5; ++i) static_cast<void>(bytes.word());  // mirrored, vertical, lines
        if (kind == Kind::StyledText) {
            format.font.file = bytes.text();
            return;
        }
        format.font.bold = bytes.word() != 0;
        format.font.italic = bytes.word() != 0;
        static_cast<void>(bytes.word());
        static_cast<void>(bytes.word());
        format.font.family = bytes.wideText();
        format.font.file = bytes.wideText();
    }

    void ray(Bytes& bytes, bool both) {
        const Point at = bytes.point();
        const Point way = bytes.point() - at;
        if (bytes.failed()) return;
        m_pen.desk().scene.ray(place(at), turned(placement(), way), both,
                               m_pen.line(m_colour, m_pen.look().lineType));
        m_drawn = true;
    }

    Pencil& m_pen;
    int m_colour;
    bool m_fill = false;
    bool m_drawn = false;
    std::vector<CMORMathTransMatrix> m_matrices;
};

}  // namespace

bool drawPreview(Pencil& pen) { return Preview(pen).draw(previewOf(pen.record())); }

}  // namespace mor::tool
