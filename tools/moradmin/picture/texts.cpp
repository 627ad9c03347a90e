#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/characters.h"
#include "tools/moradmin/picture/drawers.h"
#include "tools/moradmin/picture/views.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kBackwards = 2;
constexpr int kUpsideDown = 4;
// How a text stands across, and up or down, from its point.
constexpr int kRight = 2;
constexpr int kBetween = 3;  ///< stretched between its two points, as high as it comes
constexpr int kCentred = 4;
constexpr int kFitted = 5;  ///< between them too, with its own height
constexpr int kBottom = 1;
constexpr int kMiddle = 2;
constexpr int kTop = 3;
constexpr double kBelow = 0.3;        ///< how far letters reach below, in heights
constexpr double kMostBelow = 0.28;   ///< the same, of texts of many lines
constexpr double kLine = 0.2;         ///< of lines above and below
constexpr double kStackPitch = 1.35;  ///< from letter to letter of a vertical text
// The same of many lines, which become columns, in heights of letters.
constexpr double kColumnPitch = 53.0 / 42.0;
constexpr double kLetterPitch = 26.0 / 21.0;
constexpr double kLetterCell = 0.6;
constexpr double kSmallest = 1e-9;  ///< a length that counts as none

TextFormat formatOf(const TextStyle& style, const EntityRecord& record) {
    TextFormat format;
    format.font = style.font;
    format.height = record.real(40);
    format.widened = record.real(41, 1.0);
    format.oblique = record.real(51);
    return format;
}

bool isOfShapes(const FontWish& font) {
    const std::size_t dot = font.file.rfind('.');
    const std::string kind = dot == std::string::npos ? "shx" : font.file.substr(dot + 1);
    return font.family.empty() && sameName(kind, "shx");
}

/// A text of one line: where it stands and how.
class LineOfText {
public:
    LineOfText(Pencil& pen, const std::string& text)
        : m_pen(pen),
          m_record(pen.record()),
          m_parts(textParts(text)),
          m_style(pen.desk().looks.textStyle(
              pen.qualified(m_record.find(7) == nullptr ? "Standard" : m_record.text(7)))),
          m_format(formatOf(m_style, m_record)) {}

    bool draw() {
        const auto first = m_record.point(10);
        if (m_parts.empty()) return true;  // there is nothing to be seen
        if (!first || !(m_format.height > 0.0)) return false;
        m_across = m_record.integer(72);
        // Of attributes this is another group than of texts.
        m_down = m_record.integer(m_record.type() == "TEXT" ? 73 : 74);
        const auto second = m_record.point(11);
        auto [sine, cosine] = host::sineAndCosine(m_record.real(50));
        if ((m_across == kBetween || m_across == kFitted) && second) {
            const Point way = *second - *first;
            const double length = std::hypot(way[0], way[1]);
            if (length > kSmallest) {
                std::tie(sine, cosine) = std::pair(way[1] / length, way[0] / length);
                stretch(length);
            }
        }
        place(isAligned(m_record) ? *second : *first, sine, cosine);
        if (m_style.vertical)
            drawVertical();
        else
            drawHorizontal();
        return true;
    }

private:
    [[nodiscard]] double width() {
        double all = 0.0;
        for (const TextPart& part : m_parts)
            all += widthOf(part.text, m_format, m_pen.desk().fonts);
        return all;
    }
    void stretch(double length) {
        const double natural = width();
        if (!(natural > 0.0)) return;
        if (m_across == kBetween)
            m_format.height *= length / natural;
        else
            m_format.widened *= length / natural;
    }
    void place(const Point& at, double sine, double cosine) {
        const int mirrored = m_record.integer(71);
        const host::PlaneAxes axes = m_record.plane();
        Point right{cosine, sine, 0.0};
        Point up{-sine, cosine, 0.0};
        if ((mirrored & kBackwards) != 0) right = -1.0 * right;
        if ((mirrored & kUpsideDown) != 0) up = -1.0 * up;
        m_sheet = {m_pen.place(fromPlane(axes, at)), m_pen.turn(fromPlane(axes, right)),
                   m_pen.turn(fromPlane(axes, up))};
    }
    [[nodiscard]] double base() const {
        if (!isAligned(m_record)) return 0.0;
        const double height = m_format.height;
        if (m_across == kCentred || m_down == kMiddle) return -height / 2;
        if (m_down == kTop) return -height;
        return m_down == kBottom ? kBelow * height : 0.0;
    }
    void drawHorizontal() {
        double x = 0.0;
        if (isAligned(m_record) && m_across != 0) x = m_across == kRight ? -width() : -width() / 2;
        const double y = base();
        for (const TextPart& part : m_parts) {
            m_pen.letters(m_sheet, x, y, part.text, m_format);
            const bool lines = part.under || part.over || part.struck;
            if (!lines && &part == &m_parts.back()) break;
            const double own = widthOf(part.text, m_format, m_pen.desk().fonts);
            if (part.under) line(x, own, y - kLine * m_format.height);
            if (part.over) line(x, own, y + (1.0 + kLine) * m_format.height);
            if (part.struck) line(x, own, y + m_format.height / 2);
            x += own;
        }
    }
    void line(double x, double width, double y) {
        Path path = m_pen.path();
        path.moveTo(m_sheet.spot(x, y));
        path.lineTo(m_sheet.spot(x + width, y));
        m_pen.stroke(path, m_pen.ruled(m_pen.look().colour, m_format.height * m_pen.scale()));
    }
    /// Letter below letter, each in the middle.
    void drawVertical() {
        std::u32string all;
        for (const TextPart& part : m_parts) all += characters(part.text);
        const double pitch = kStackPitch * m_format.height;
        double y = -m_format.height;
        if (isAligned(m_record) && (m_across != 0 || m_down != 0))
            y += m_across == kRight ? pitch * static_cast<double>(all.size())
                 : m_across == 0    ? 0.0
                                    : pitch * static_cast<double>(all.size()) / 2;
        for (const char32_t c : all) {
            const std::string letter = utf8Of({&c, 1});
            const double own = widthOf(letter, m_format, m_pen.desk().fonts);
            if (c != U' ') m_pen.letters(m_sheet, -own / 2, y, letter, m_format);
            y -= pitch;
        }
    }

    Pencil& m_pen;
    const EntityRecord& m_record;
    std::vector<TextPart> m_parts;
    const TextStyle& m_style;
    TextFormat m_format;
    Sheet m_sheet;
    int m_across = 0;
    int m_down = 0;
};

/// The text of many lines in a record, its pieces joined.
std::string longText(const EntityRecord& record) {
    std::string text;
    for (const host::GroupView& group : record.groups())
        if (group.code == 3) text += group.value;
    return text + record.text(1);
}

/// How many columns there are and how high, from what newer drawings embed.
void readColumns(const EntityRecord& record, TextBox& box) {
    if (record.embedded().empty()) return;
    const EntityRecord columns("", record.embedded());
    if (columns.integer(71) == 0) return;
    box.width = columns.real(44, box.width);
    box.gutter = columns.real(45);
    const int count = columns.integer(72);
    for (const host::GroupView& group : columns.groups())
        if (group.code == 46) box.columnHeights.push_back(readReal(group.value).value_or(0.0));
    if (box.columnHeights.empty() && columns.real(41) > 0.0) box.columnHeights = {columns.real(41)};
    const double whole = columns.real(42) + box.gutter;
    const double each = box.width + box.gutter;
    const double fitting = each > 0.0 ? std::floor(whole / each + 0.5) : 1.0;
    box.columns = static_cast<std::size_t>(
        std::clamp(count > 0 ? static_cast<double>(count) : fitting, 1.0, 1000.0));
}

/// The same, from the extended data of older ones: codes and values by turns.
void readOldColumns(const std::vector<host::RecordGroup>& data, TextBox& box) {
    constexpr int kMarker = 1000;
    std::map<int, double> values;
    std::vector<double> heights;
    int code = 0;
    for (const host::RecordGroup& group : data) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == kMarker)
            code = 0;
        else if (code == 0)
            code = static_cast<int>(value);
        else if (code == 50 && group.code == 1070)
            continue;  // how many heights follow
        else if (code == 50)
            heights.push_back(value);
        else
            values[std::exchange(code, 0)] = value;
    }
    if (values[75] == 0.0 || !(values[48] > 0.0) || values[76] < 2.0) return;
    box.width = values[48];
    box.gutter = values[49];
    box.columns = static_cast<std::size_t>(std::min(values[76], 1000.0));
    if (values[46] > 0.0) heights = {values[46]};
    box.columnHeights = heights;
}

class LongText {
public:
    LongText(Pencil& pen, const EntityRecord& record) : m_pen(pen), m_record(record) {}

    bool draw() {
        const auto at = m_record.point(10);
        const std::string name = m_record.find(7) == nullptr ? "Standard" : m_record.text(7);
        const TextStyle& style = m_pen.desk().looks.textStyle(m_pen.qualified(name));
        TextFormat first;
        first.font = style.font;
        first.height = m_record.real(40, style.height);
        first.widened = style.widened;
        first.oblique = style.oblique;
        if (longText(m_record).empty()) return true;
        if (!at || !(first.height > 0.0)) return false;
        const FormattedText text =
            readFormats(longText(m_record), first, m_pen.look().colour, m_pen.look().colour);
        if (text.pieces.empty()) return true;
        const int attached = std::clamp(m_record.integer(71, 1), 1, 9) - 1;
        const int direction = m_record.integer(72, kByStyle);
        // Fonts of outlines are never set downwards.
        if (isOfShapes(style.font) &&
            (direction == kDownwards || (direction == kByStyle && style.vertical))) {
            drawVertical(sheetAt(*at), text, attached, first.height);
            return true;
        }
        TextBox box;
        box.width = std::max(m_record.real(41), 0.0);
        box.height = first.height;
        box.spacing = m_record.real(44, 1.0);
        box.exactly = m_record.integer(73, 1) == 2;
        box.across = attached % 3;
        readColumns(m_record, box);
        if (m_record.embedded().empty() && m_record.type() == "MTEXT")
            readOldColumns(extendedData(m_pen.desk().document, m_pen.name(), "ACAD"), box);
        const TextLayout layout = layOut(text, box, m_pen.desk().fonts);
        const double whole = box.columns > 1 || box.width <= 0.0 ? layout.width : box.width;
        const double x = -whole * (attached % 3) / 2;
        const int down = attached / 3;  // by the lowest part of letters, not by their base line
        const double y = layout.height * down / 2 + (down == 2 ? kMostBelow * first.height : 0.0);
        const Sheet sheet = sheetAt(*at);
        drawBackground(sheet, x, y, whole, layout.height, first.height);
        m_pen.letters(sheet, x, y, text, layout);
        return true;
    }

private:
    static constexpr int kDownwards = 3;
    static constexpr int kByStyle = 5;

    /// Letter below letter, a column for each paragraph.
    void drawVertical(const Sheet& sheet, const FormattedText& text, int attached, double height) {
        struct Column {
            std::u32string letters;
            std::vector<std::size_t> formats;
        };
        std::vector<Column> columns(1);
        std::size_t longest = 1;
        for (const TextPiece& piece : text.pieces) {
            const bool printed = piece.kind == TextPiece::Kind::Word;
            if (piece.kind == TextPiece::Kind::Paragraph) columns.emplace_back();
            Column& column = columns.back();
            if (printed || piece.kind == TextPiece::Kind::Blank)
                column.letters += printed ? characters(piece.text) : U" ";
            column.formats.resize(column.letters.size(), piece.format);
            longest = std::max(longest, column.letters.size());
        }
        const double pitch = kColumnPitch * m_record.real(44, 1.0) * height;
        const double cell = kLetterCell * height;
        const double across = static_cast<double>(columns.size() - 1) * pitch + cell;
        const double down = (1.0 + static_cast<double>(longest - 1) * kLetterPitch) * height;
        const double left = -across * (attached % 3) / 2;
        const int row = attached / 3;
        const double top = down * row / 2;
        for (std::size_t i = 0; i < columns.size(); ++i)
            for (std::size_t k = 0; k < columns[i].letters.size(); ++k) {
                const TextFormat& format = text.formats[columns[i].formats[k]];
                const std::string letter = utf8Of({&columns[i].letters[k], 1});
                const double own = widthOf(letter, format, m_pen.desk().fonts);
                const double x = left + static_cast<double>(i) * pitch + (cell - own) / 2;
                const double y = top - (1.0 + static_cast<double>(k) * kLetterPitch) * height;
                if (letter != " ") m_pen.letters(sheet, x, y, letter, format);
            }
    }
    [[nodiscard]] Sheet sheetAt(const Point& at) const {
        const host::PlaneAxes axes = m_record.plane();
        // Directions are those of the owner, also where the text is seen from behind.
        const auto [sine, cosine] = host::sineAndCosine(m_record.real(50));
        Point right = m_record.point(11, Point{cosine, sine, 0.0});
        const double length =
            std::sqrt(right[0] * right[0] + right[1] * right[1] + right[2] * right[2]);
        right = length > kSmallest ? (1.0 / length) * right : axes[0];
        return {m_pen.place(at), m_pen.turn(right), m_pen.turn(cross(axes[2], right))};
    }
    void drawBackground(const Sheet& sheet, double x, double y, double width, double height,
                        double letters) {
        constexpr int kFill = 1;
        constexpr int kWindow = 2;
        const int kind = m_record.integer(90);
        if ((kind & (kFill | kWindow)) == 0) return;
        const double room = (m_record.real(45, 1.5) - 1.0) * letters;
        Path path = m_pen.path();
        path.moveTo(sheet.spot(x - room, y + room));
        path.lineTo(sheet.spot(x + width + room, y + room));
        path.lineTo(sheet.spot(x + width + room, y - height - room));
        path.lineTo(sheet.spot(x - room, y - height - room));
        path.close();
        if ((kind & kWindow) != 0) return m_pen.desk().scene.mask(path);
        const int colour = m_record.find(421) != nullptr ? m_record.integer(421) & kWhite
                                                         : paletteColour(m_record.integer(63, 7));
        m_pen.fill(path, m_pen.area(colour));
    }

    Pencil& m_pen;
    const EntityRecord& m_record;
};

}  // namespace

bool drawText(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const bool definition = record.type() == "ATTDEF";
    constexpr int kConstant = 2;
    if (!record.embedded().empty() && !definition) {
        const EntityRecord inner("MTEXT", record.embedded());
        if (inner.point(10) && !longText(inner).empty()) return LongText(pen, inner).draw();
    }
    const bool byTag = definition && (record.integer(70) & kConstant) == 0;
    return LineOfText(pen, record.text(byTag ? 2 : 1)).draw();
}

bool drawLongText(Pencil& pen) { return LongText(pen, pen.record()).draw(); }

}  // namespace mor::tool
