#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/dimension_look.h"
#include "tools/moradmin/picture/drawers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace mor::tool {

namespace {

// In drawings that do not say how large.
constexpr double kArrow = 0.18;
constexpr double kText = 0.18;
constexpr double kNarrow = 1.0 / 6.0;  ///< half the width of an arrow, of its length

double lengthOf(const Point& way) {
    return std::sqrt(way[0] * way[0] + way[1] * way[1] + way[2] * way[2]);
}

/// What is drawn of a dimension whose block is missing.
class BareDimension {
public:
    explicit BareDimension(Pencil& pen)
        : m_pen(pen), m_record(pen.record()), m_look(pen), m_kind(m_record.integer(70) & 7) {}

    bool draw() {
        const auto at = m_record.point(10);
        if (!at) return false;
        m_size = m_look.length(kDimArrowSize, kArrow);
        m_colour = m_look.colour(kDimLineColour, m_pen.look().colour);
        switch (m_kind) {
            case 0:
            case 1:
                drawLinear(*at);
                break;
            case 3:
            case 4:
                drawRadial(*at);
                break;
            case 6:
                line(m_record.point(13, *at), m_record.point(14, *at));
                break;
            default:
                line(m_record.point(13, *at), m_record.point(14, *at));
                line(m_record.point(15, *at), *at);
                break;
        }
        drawMeasure(m_record.point(11, *at));
        return true;
    }

private:
    void line(const Point& from, const Point& to) {
        Path path = m_pen.path();
        path.moveTo(m_pen.place(from));
        path.lineTo(m_pen.place(to));
        m_pen.stroke(path, m_pen.line(m_colour, m_pen.look().lineType));
    }
    void arrow(const Point& tip, const Point& from) {
        drawArrow(m_pen, tip, from, m_size, m_colour, "");
    }

    void drawLinear(const Point& at) {
        const Point first = m_record.point(13, at);
        const Point second = m_record.point(14, at);
        Point way = second - first;
        if (m_kind == 0) {
            const auto [sine, cosine] = host::sineAndCosine(m_record.real(50));
            way = {cosine, sine, 0.0};
        }
        const double length = lengthOf(way);
        if (!(length > 0.0)) return;
        way = (1.0 / length) * way;
        // Where the extension lines meet the dimension line.
        const auto onLine = [&](const Point& point) {
            const Point to = point - at;
            return at + (to[0] * way[0] + to[1] * way[1] + to[2] * way[2]) * way;
        };
        const Point a = onLine(first);
        const Point b = onLine(second);
        m_turn = std::atan2(way[1], way[0]);
        m_measured = lengthOf(b - a);
        line(first, a);
        line(second, b);
        line(a, b);
        arrow(a, b);
        arrow(b, a);
    }
    void drawRadial(const Point& at) {
        const Point other = m_record.point(15, at);
        m_measured = lengthOf(other - at);
        m_turn = std::atan2(other[1] - at[1], other[0] - at[0]);
        line(at, other);
        arrow(other, at);
        if (m_kind == 3) arrow(at, other);
    }

    [[nodiscard]] std::string measure() const {
        double value = m_record.real(42, m_measured);
        const bool angle = m_kind == 2 || m_kind == 5;
        if (angle) value *= 180.0 / std::numbers::pi;
        const int decimals = std::min(static_cast<int>(m_look.real(kDimDecimals, 2)), 8);
        std::array<char, 64> digits{};
        const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                                std::chars_format::fixed, std::max(decimals, 0));
        std::string text(digits.data(), error == std::errc() ? end : digits.data());
        if (text.find('.') != std::string::npos)
            while (text.back() == '0' || text.back() == '.') {
                const bool point = text.back() == '.';
                text.pop_back();
                if (point) break;
            }
        if (angle) return text + "\u00B0";
        return (m_kind == 3 ? "\u2300" : m_kind == 4 ? "R" : "") + text;
    }
    void drawMeasure(const Point& at) {
        std::string text = m_record.text(1);
        if (text == " ") return;
        if (text.empty()) text = "<>";
        if (const std::size_t mark = text.find("<>"); mark != std::string::npos)
            text.replace(mark, 2, measure());
        TextFormat first;
        first.font = m_pen.desk().looks.textStyle(m_pen.qualified("Standard")).font;
        first.height = m_look.length(kDimTextHeight, kText);
        if (!(first.height > 0.0)) return;
        const int colour = m_look.colour(kDimTextColour, m_pen.look().colour);
        first.colour = colour;
        const FormattedText formatted = readFormats(text, first, colour, colour);
        TextBox box;
        box.height = first.height;
        box.across = 1;
        const TextLayout layout = layOut(formatted, box, m_pen.desk().fonts);
        double turn = m_turn;
        if (std::cos(turn) < -1e-6) turn += std::numbers::pi;  // never upside down
        const Point right{std::cos(turn), std::sin(turn), 0.0};
        const Point up{-right[1], right[0], 0.0};
        const Sheet sheet{m_pen.place(at), m_pen.turn(right), m_pen.turn(up)};
        m_pen.letters(sheet, -layout.width / 2, layout.height / 2, formatted, layout);
    }

    Pencil& m_pen;
    const EntityRecord& m_record;
    DimensionLook m_look;
    int m_kind;
    double m_size = 0.0;
    int m_colour = 0;
    double m_turn = 0.0;
    double m_measured = 0.0;
};

}  // namespace

DimensionLook::DimensionLook(const Pencil& pen)
    : m_style(pen.desk().looks.dimensionStyle(
          pen.qualified(pen.record().find(3) == nullptr ? "Standard" : pen.record().text(3)))) {
    bool within = false;
    int code = 0;
    for (const host::RecordGroup& group : extendedData(pen.desk().document, pen.name(), "ACAD")) {
        if (group.code == 1000) within = group.value == "DSTYLE";
        if (!within || group.code == 1000 || group.code == 1002) continue;
        if (code == 0) {
            code = static_cast<int>(readInteger(group.value).value_or(0));
        } else {
            m_own.emplace(code, group.value);
            code = 0;
        }
    }
    m_scale = real(kDimScale, 1.0);
    if (!(m_scale > 0.0)) m_scale = 1.0;
}

double DimensionLook::real(int code, double missing) const {
    if (const auto own = m_own.find(code); own != m_own.end())
        return readReal(own->second).value_or(missing);
    return m_style == nullptr ? missing : m_style->real(code, missing);
}

std::string DimensionLook::text(int code) const {
    if (const auto own = m_own.find(code); own != m_own.end()) return own->second;
    return m_style == nullptr ? std::string() : m_style->text(code);
}

int DimensionLook::colour(int code, int otherwise) const {
    const int number = static_cast<int>(real(code, kByBlock));
    return number == kByBlock || number == kByLayer ? otherwise : paletteColour(number);
}

void drawArrow(Pencil& pen, const Point& tip, const Point& from, double size, int colour,
               const std::string& block) {
    const Point back = from - tip;
    const double length = lengthOf(back);
    if (!(length > 0.0) || !(size > 0.0)) return;
    const Point way = (1.0 / length) * back;
    const Point across{-way[1], way[0], way[2]};
    if (!block.empty() && block != "0") {
        const auto record = pen.recordOf(block);
        CMORMathTransMatrix own;  // heads lie at the origin and point to the right
        const std::array<Point, 3> axes = {-size * way, -size * across, Point{0.0, 0.0, size}};
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                own.rows[row][column] = axes[column][row];
            own.rows[row][3] = tip[row];
        }
        if (record && pen.desk().drawBlock(pen, record->text(2), own)) return;
    }
    Path head = pen.path();
    head.moveTo(pen.place(tip));
    head.lineTo(pen.place(tip + size * way + (size * kNarrow) * across));
    head.lineTo(pen.place(tip + size * way - (size * kNarrow) * across));
    head.close();
    pen.fill(head, pen.area(pen.desk().palette.line(colour)));
}

bool drawLeader(Pencil& pen) {
    const EntityRecord& record = pen.record();
    std::vector<Point> points;
    for (const Vertex& vertex : verticesOf(record)) points.push_back(vertex.at);
    if (points.size() < 2) return !points.empty();  // one point is seen by nobody
    const DimensionLook look(pen);
    const double size = look.length(kDimArrowSize, kArrow);
    const int colour = look.colour(kDimLineColour, pen.look().colour);
    const Point tip = points[0];
    const Point from = points[1];
    const bool hook = record.integer(73, 3) == 0 && record.integer(75) != 0;
    const double width = record.real(41);
    if (hook && look.real(kDimTextAbove, 0) != 0.0 && width > 0.0) {
        const double reach = width + look.length(kDimGap, kText / 2);
        const Point way = record.point(211, Point{1.0, 0.0, 0.0});
        points.push_back(points.back() + (record.integer(74) == 1 ? -reach : reach) * way);
    }
    const bool smooth = record.integer(72) == 1;
    Path path = pen.path();
    for (const Point& point : smooth ? curveThrough(points, false) : points)
        path.join(pen.place(point));
    pen.stroke(path, pen.line(colour, pen.look().lineType));
    if (record.integer(71, 1) != 0)
        drawArrow(pen, tip, from, size, colour, look.text(kDimLeaderArrow));
    return path.isFinite();
}

bool drawDimension(Pencil& pen) { return BareDimension(pen).draw(); }

}  // namespace mor::tool
