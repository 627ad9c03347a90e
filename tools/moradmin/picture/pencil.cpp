#include "tools/moradmin/picture/pencil.h"

#include "tools/moradmin/output.h"

#include <cmath>
#include <numbers>

namespace mor::tool {

namespace {

/// A line with more patterns shows them without their letters.
constexpr double kMostPatterns = 2000.0;

/// Dashes and gaps by turns, a dash first; empty where there are none.
std::vector<float> alternating(const std::vector<double>& lengths, double scale) {
    std::vector<double> merged;  // neighbours of one kind are one
    for (const double length : lengths) {
        const bool gap = length < 0.0;
        if (merged.size() % 2 == (gap ? 1 : 0))
            merged.push_back(std::fabs(length));
        else if (!merged.empty())
            merged.back() += std::fabs(length);
        else
            merged = {0.0, std::fabs(length)};  // begins with a gap
    }
    if (merged.size() % 2 != 0) {
        if (merged.size() == 1) return {};
        merged.front() += merged.back();
        merged.pop_back();
    }
    std::vector<float> result;
    double whole = 0.0;
    for (const double length : merged) {
        result.push_back(static_cast<float>(length * scale));
        whole += length * scale;
    }
    const bool gaps = merged.size() > 1 && whole > 0.0 && std::isfinite(whole);
    return gaps ? result : std::vector<float>();
}

}  // namespace

std::optional<EntityRecord> Pencil::recordOf(const std::string& handle) const {
    const auto found = host::findHandleBeside(m_desk.document, m_name, wide(handle));
    if (!found) return std::nullopt;
    EntityRecord record(m_desk.document, *found);
    m_desk.read += record.bytes();
    return record;
}

double Pencil::patternScale() const {
    return std::fabs(m_desk.settings.lineTypeScale * m_look.lineTypeScale);
}

double Pencil::scale() const {
    const Point x = turn({1.0, 0.0, 0.0});
    const Point y = turn({0.0, 1.0, 0.0});
    return std::sqrt(std::fabs(x[0] * y[1] - x[1] * y[0]));
}

Style Pencil::line(int colour, const LineType* lineType) const {
    Style style;
    style.rgb = m_desk.palette.line(colour);
    style.opacity = m_look.opacity;
    style.weight = m_look.weight;
    if (lineType == nullptr || lineType->lengths.empty()) return style;
    const double scale = patternScale();
    Desk::Dashes& last = m_desk.dashes;
    if (last.type != lineType || last.scale != scale) {
        const std::vector<float> dashes = alternating(lineType->lengths, scale);
        last = {lineType, scale, dashes.empty() ? 0 : m_desk.scene.dash(dashes)};
    }
    style.dash = last.dash;
    return style;
}

Style Pencil::ruled(int colour, double height) const {
    constexpr double kThick = 0.06;  // of the letters
    Style style = line(colour, nullptr);
    style.weight = 0.0F;
    if (height < kFarthest) style.width = static_cast<float>(kThick * height);
    return style;
}

Style Pencil::area(int colour) const {
    Style style;
    style.rgb = m_desk.palette.area(colour);
    style.opacity = m_look.opacity;
    style.weight = m_look.weight;
    return style;
}

void Pencil::lettersAlong(const Path& path) {
    if (m_look.lineType == nullptr || m_look.lineType->texts.empty()) return;
    const LineType& type = *m_look.lineType;
    double pattern = 0.0;
    for (const double length : type.lengths) pattern += std::fabs(length) * patternScale();
    for (const std::vector<Spot>& part : flattened(path.ops(), path.numbers().data())) {
        double whole = 0.0;
        for (std::size_t i = 1; i < part.size(); ++i)
            whole += std::hypot(part[i].x - part[i - 1].x, part[i].y - part[i - 1].y);
        if (!(pattern > 0.0) || !(whole / pattern < kMostPatterns)) continue;
        for (const LineText& text : type.texts)
            for (std::size_t i = 0;; ++i) {
                const double at = text.along * patternScale() + static_cast<double>(i) * pattern;
                if (!(at < whole)) break;
                letterAt(part, at, text);
            }
    }
}

void Pencil::letterAt(const std::vector<Spot>& line, double at, const LineText& text) {
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point way{line[i].x - line[i - 1].x, line[i].y - line[i - 1].y, 0.0};
        const double length = std::hypot(way[0], way[1]);
        if (at > length) {
            at -= length;
            continue;
        }
        if (!(length > 0.0)) return;
        const Point along = (1.0 / length) * way;
        const Point from = text.upright ? Point{1.0, 0.0, 0.0} : along;
        const auto [sine, cosine] = host::sineAndCosine(text.turn);
        const Point right{cosine * from[0] - sine * from[1], sine * from[0] + cosine * from[1],
                          0.0};
        TextFormat format;
        format.font = text.style.font;
        format.widened = text.style.widened;
        format.oblique = text.style.oblique;
        const double height = text.style.height > 0.0 ? text.style.height : 1.0;
        format.height = text.size * height * patternScale();
        const Point start = Point{line[i - 1].x, line[i - 1].y, 0.0} + at * along +
                            text.x * patternScale() * along +
                            text.y * patternScale() * Point{-along[1], along[0], 0.0};
        return letters({start + m_desk.scene.shift(), right, {-right[1], right[0], 0.0}}, 0.0, 0.0,
                       text.text, format);
    }
}

void Pencil::polyline(const std::vector<Point>& points, bool closed) {
    Path path = this->path();
    for (const Point& point : points) path.join(place(point));
    if (closed) path.close();
    stroke(path);
}

void Pencil::letters(const Sheet& sheet, double x, double y, const std::string& text,
                     const TextFormat& format) {
    if (!m_desk.font || m_desk.fontWish != format.font) {
        m_desk.font = m_desk.fonts.find(format.font);
        m_desk.fontWish = format.font;
    }
    const std::uint32_t font = *m_desk.font;
    const double capital = m_desk.fonts.capitalHeight(font);
    const double slant = std::tan(format.oblique * (std::numbers::pi / 180.0));
    TextRun run;
    run.text = text;
    run.font = font;
    run.right = format.widened * sheet.right;
    run.down = -1.0 * (sheet.up + slant * sheet.right);
    run.at = sheet.spot(x, y) - m_desk.scene.shift();
    run.size = format.height / capital;
    run.width = m_desk.fonts.width(font, text) * run.size * format.tracking;
    run.spaced = format.tracking != 1.0;
    run.rise = format.height;
    run.fall = 0.3 * format.height;
    Style style;
    style.rgb = m_desk.palette.line(format.colour.value_or(m_look.colour));
    style.opacity = m_look.opacity;
    m_desk.scene.text(std::move(run), style);
}

void Pencil::letters(const Sheet& sheet, double x, double y, const FormattedText& text,
                     const TextLayout& layout) {
    for (const TextLayout::Part& part : layout.parts)
        letters(sheet, x + part.x, y + part.y, part.text, text.formats[part.format]);
    for (const TextLayout::Line& one : layout.lines) {
        Path path = this->path();
        path.moveTo(sheet.spot(x + one.x1, y + one.y1));
        path.lineTo(sheet.spot(x + one.x2, y + one.y2));
        const TextFormat& format = text.formats[one.format];
        const double unit = std::hypot(sheet.up[0], sheet.up[1], sheet.up[2]);
        stroke(path, ruled(format.colour.value_or(m_look.colour), format.height * unit));
    }
}

}  // namespace mor::tool
