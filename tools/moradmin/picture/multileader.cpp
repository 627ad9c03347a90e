#include "tools/moradmin/picture/dimension_look.h"
#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace mor::tool {

namespace {

// Where the parts of a multileader begin and end.
constexpr int kContext = 300;
constexpr int kContextEnd = 301;
constexpr int kLeader = 302;
constexpr int kLeaderEnd = 303;
constexpr int kLeaderLine = 304;
constexpr int kLeaderLineEnd = 305;

/// Points of a group that stands several times.
std::vector<Point> pointsOfGroup(const std::vector<host::GroupView>& groups, int code) {
    std::vector<Point> points;
    for (const host::GroupView& group : groups) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == code) points.push_back({value, 0.0, 0.0});
        if (points.empty()) continue;
        if (group.code == code + 10) points.back()[1] = value;
        if (group.code == code + 20) points.back()[2] = value;
    }
    return points;
}

/// A record taken apart: what stands in its braces, and the rest.
class Multileader {
public:
    explicit Multileader(Pencil& pen) : m_pen(pen) {
        for (const host::GroupView& group : pen.record().groups())
            if (!enters(group.code) && !leaves(group.code)) keep(group);
    }

    bool draw() {
        if (m_context.empty()) return false;
        const EntityRecord context("", m_context);
        const EntityRecord rest("", m_rest);
        m_scale = context.real(40, 1.0);
        m_colour = packedColour(rest.integer(91)).value_or(m_pen.look().colour);
        for (const Leader& leader : m_leaders) drawLeaderLines(leader, context, rest);
        if (context.integer(290) != 0) drawLetters(context, rest);
        if (context.integer(296) != 0) drawContent(context, rest);
        return true;
    }

private:
    /// Within which braces a group stands.
    enum class Where { Outside, Content, Arrow, Line };

    bool enters(int code) {
        if (code == kContext && m_where == Where::Outside) {
            m_where = Where::Content;
        } else if (code == kLeader && m_where == Where::Content) {
            m_where = Where::Arrow;
            m_leaders.emplace_back();
        } else if (code == kLeaderLine && m_where == Where::Arrow) {
            m_where = Where::Line;
            m_leaders.back().lines.emplace_back();
        } else {
            return false;
        }
        return true;
    }
    bool leaves(int code) {
        const Where before = m_where;
        if (code == kContextEnd && before == Where::Content) m_where = Where::Outside;
        if (code == kLeaderEnd && before == Where::Arrow) m_where = Where::Content;
        if (code == kLeaderLineEnd && before == Where::Line) m_where = Where::Arrow;
        return m_where != before;
    }
    void keep(const host::GroupView& group) {
        if (m_where == Where::Line)
            m_leaders.back().lines.back().push_back(group);
        else if (m_where == Where::Arrow)
            m_leaders.back().groups.push_back(group);
        else
            (m_where == Where::Content ? m_context : m_rest).push_back(group);
    }

    struct Leader {
        std::vector<host::GroupView> groups;
        std::vector<std::vector<host::GroupView>> lines;
    };

    void drawLeaderLines(const Leader& leader, const EntityRecord& context,
                         const EntityRecord& rest) {
        const EntityRecord own("", leader.groups);
        const int kind = rest.integer(170, 1);
        if (kind == 0) return;
        const auto last = own.point(10);
        // A landing goes on from the last point to the content.
        const bool landing = last && rest.integer(291, 1) != 0 && own.integer(291) != 0;
        const Point end =
            landing ? *last + own.real(40) * own.point(11, Point{1.0, 0.0, 0.0}) : Point{};
        const double size = context.real(140, rest.real(42) * m_scale);
        for (const auto& line : leader.lines) {
            std::vector<Point> points = pointsOfGroup(line, 10);
            if (last) points.push_back(*last);
            if (points.size() < 2) continue;
            const Point tip = points[0];
            const Point from = points[1];
            if (landing && kind == 1) points.push_back(end);
            Path path = m_pen.path();
            for (const Point& point : kind == 2 ? curveThrough(points, false) : points)
                path.join(m_pen.place(point));
            m_pen.stroke(path, m_pen.line(m_colour, m_pen.look().lineType));
            drawArrow(m_pen, tip, from, size, m_colour, rest.text(342));
        }
    }

    void drawLetters(const EntityRecord& context, const EntityRecord& rest) {
        const auto at = context.point(12);
        TextFormat first;
        first.height = context.real(41);
        if (!at || !(first.height > 0.0)) return;
        if (const auto style = m_pen.recordOf(context.text(340))) {
            const TextStyle& looks = m_pen.desk().looks.textStyle(m_pen.qualified(style->text(2)));
            first.font = looks.font;
            first.widened = looks.widened;
        }
        const int colour = packedColour(context.integer(90)).value_or(m_pen.look().colour);
        first.colour = colour;
        const FormattedText text =
            readFormats(context.text(304), first, m_pen.look().colour, colour);
        if (text.pieces.empty()) return;
        TextBox box;
        box.width = std::max(context.real(43), 0.0) * m_scale;
        box.height = first.height;
        box.spacing = context.real(45, 1.0);
        box.exactly = context.integer(170, 1) == 2;
        box.across = std::clamp(context.integer(171, 1), 1, 3) - 1;
        const TextLayout layout = layOut(text, box, m_pen.desk().fonts);
        const Point normal = context.point(11, Point{0.0, 0.0, 1.0});
        const Point right = context.point(13, Point{1.0, 0.0, 0.0});
        const Sheet sheet{m_pen.place(*at), m_pen.turn(right), m_pen.turn(cross(normal, right))};
        const double whole = box.width > 0.0 ? box.width : layout.width;
        const double x = -whole * box.across / 2;
        m_pen.letters(sheet, x, 0.0, text, layout);
        if (rest.integer(292) == 0) return;
        const double gap = context.real(145);
        Path frame = m_pen.path();
        const double begin = x + layout.left - gap;
        const double end = x + layout.left + layout.width + gap;
        frame.moveTo(sheet.spot(begin, gap));
        frame.lineTo(sheet.spot(end, gap));
        frame.lineTo(sheet.spot(end, -layout.height - gap));
        frame.lineTo(sheet.spot(begin, -layout.height - gap));
        frame.close();
        m_pen.stroke(frame, m_pen.line(m_colour, nullptr));
    }

    /// A block as content, with its labels.
    void drawContent(const EntityRecord& context, const EntityRecord& rest) {
        const auto record = m_pen.recordOf(context.text(341));
        if (!record) return;
        CMORMathTransMatrix own;
        std::size_t count = 0;
        for (const host::GroupView& group : context.groups())
            if (group.code == 47 && count < 12) {
                own.rows[count / 4][count % 4] = readReal(group.value).value_or(0.0);
                ++count;
            }
        if (count < 12) {
            const Point at = context.point(15, {});
            for (std::size_t row = 0; row < 3; ++row) own.rows[row][3] = at[row];
        }
        if (!m_pen.desk().drawBlock(m_pen, record->text(2), own)) return;
        const CMORMathTransMatrix placement = product(m_pen.placement(), own);
        std::string_view definition;
        for (const host::GroupView& group : rest.groups()) {
            if (group.code == 330) definition = group.value;
            if (group.code == 302) drawLabel(definition, group.value, placement);
        }
    }
    /// A text of the block's own, which stands where the block defines it.
    void drawLabel(std::string_view definition, std::string_view text,
                   const CMORMathTransMatrix& placement) {
        const auto found = m_pen.recordOf(std::string(definition));
        if (!found || found->type() != "ATTDEF") return;
        std::vector<host::GroupView> groups = found->groups();
        const auto shown = std::ranges::find(groups, 1, &host::GroupView::code);
        if (shown == groups.end()) return;
        shown->value = text;
        const EntityRecord label("ATTRIB", std::move(groups));
        Pencil pen(m_pen.desk(), m_pen.name(), label, placement, m_pen.look(), m_pen.reference());
        static_cast<void>(drawText(pen));
    }

    Pencil& m_pen;
    Where m_where = Where::Outside;
    std::vector<host::GroupView> m_context;
    std::vector<host::GroupView> m_rest;
    std::vector<Leader> m_leaders;
    double m_scale = 1.0;
    int m_colour = 0;
};

}  // namespace

bool drawMultileader(Pencil& pen) { return Multileader(pen).draw(); }

}  // namespace mor::tool
