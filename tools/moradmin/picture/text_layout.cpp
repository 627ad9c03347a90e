#include "tools/moradmin/picture/text_layout.h"

#include <algorithm>
#include <cmath>

namespace mor::tool {

namespace {

constexpr double kLinePitch = 5.0 / 3.0;  ///< from line to line, in heights of letters
constexpr double kTabStop = 4.0;          ///< in heights of letters
constexpr double kUnderline = 0.2;        ///< how far below the base line, and above letters
constexpr double kStackGap = 0.4;         ///< between stacked parts, in heights of letters
constexpr double kSlack = 1.0001;         ///< what a line may be too long by

using Kind = TextPiece::Kind;

/// Puts pieces into lines, and lines below each other.
class Setter {
public:
    Setter(const FormattedText& text, const TextBox& box, Fonts& fonts)
        : m_text(text), m_box(box), m_fonts(fonts) {}

    TextLayout run() {
        std::size_t at = 0;
        while (at < m_text.pieces.size()) {
            const TextPiece& piece = m_text.pieces[at];
            if (isPrinted(piece)) {
                std::size_t end = at;
                while (end < m_text.pieces.size() && isPrinted(m_text.pieces[end])) ++end;
                cluster(at, end);
                at = end;
                continue;
            }
            gap(piece);
            ++at;
        }
        if (!m_line.empty() || !m_ended) endLine(m_text.formats.back());
        finishColumn();
        double right = 0.0;
        m_result.left = m_result.parts.empty() ? 0.0 : m_result.parts.front().x;
        for (const TextLayout::Part& part : m_result.parts) {
            m_result.left = std::min(m_result.left, part.x);
            right = std::max(right, part.x + part.width);
        }
        m_result.width = right - m_result.left;
        m_result.height = std::max(m_result.height, -m_lowest);
        return std::move(m_result);
    }

private:
    struct Item {
        const TextPiece* piece = nullptr;
        double x = 0.0;
        double width = 0.0;
    };

    static bool isPrinted(const TextPiece& piece) {
        return piece.kind == Kind::Word || piece.kind == Kind::Stack;
    }
    [[nodiscard]] const TextFormat& formatOf(const TextPiece& piece) const {
        return m_text.formats[piece.format];
    }
    [[nodiscard]] double widthOfPiece(const TextPiece& piece) {
        const TextFormat& format = formatOf(piece);
        if (piece.kind != Kind::Stack) return widthOf(piece.text, format, m_fonts);
        const double above = widthOf(piece.text, format, m_fonts);
        const double below = widthOf(piece.below, format, m_fonts);
        return piece.between == '#' ? above + below + kStackGap * format.height
                                    : std::max(above, below);
    }

    /// Pieces between which no line is broken.
    void cluster(std::size_t begin, std::size_t end) {
        double width = 0.0;
        for (std::size_t i = begin; i < end; ++i) width += widthOfPiece(m_text.pieces[i]);
        const TextFormat& format = formatOf(m_text.pieces[begin]);
        if (m_line.empty() && m_x == 0.0) m_x = beginOf(format);
        const double most = m_box.width - format.right;
        if (m_box.width > 0.0 && m_x + width > most * kSlack && !m_line.empty()) {
            endLine(format);
            m_x = format.left;
        }
        for (std::size_t i = begin; i < end; ++i) {
            const double own = widthOfPiece(m_text.pieces[i]);
            m_line.push_back({&m_text.pieces[i], m_x, own});
            m_x += own;
        }
        m_ended = false;
    }
    [[nodiscard]] double beginOf(const TextFormat& format) const {
        return m_newParagraph ? std::max(format.indent + format.left, 0.0) : format.left;
    }

    void gap(const TextPiece& piece) {
        const TextFormat& format = formatOf(piece);
        if (piece.kind == Kind::Paragraph || piece.kind == Kind::Column) {
            endLine(format);
            m_newParagraph = true;
            m_ended = false;  // an empty line may follow
            if (piece.kind == Kind::Column) nextColumn();
            return;
        }
        if (m_line.empty() && m_x == 0.0) m_x = beginOf(format);
        double width = widthOf(" ", format, m_fonts);
        if (piece.kind == Kind::Tab) width = nextTab(format) - m_x;
        m_line.push_back({&piece, m_x, width});
        m_x += width;
        m_ended = false;
    }
    [[nodiscard]] double nextTab(const TextFormat& format) const {
        for (const double stop : format.tabs)
            if (stop > m_x * kSlack) return stop;
        const double step = kTabStop * m_box.height;
        return (std::floor(m_x / step + 1e-6) + 1.0) * step;
    }

    /// Sets the line that was gathered; `format` counts for an empty one.
    void endLine(const TextFormat& format) {
        double height = m_line.empty() ? format.height : 0.0;
        double above = 0.0;
        for (const Item& item : m_line) {
            const TextFormat& own = formatOf(*item.piece);
            height = std::max(height, own.height);
            if (item.piece->kind == Kind::Stack) above = std::max(above, own.height * 0.7);
        }
        const double pitch = kLinePitch * m_box.spacing * (m_box.exactly ? m_box.height : height);
        double base = m_first ? -height : m_base - pitch - (m_box.exactly ? 0.0 : above / 2);
        if (!m_first && columnIsFull(base)) {
            nextColumn();
            base = -height;
        }
        m_base = base;
        m_first = false;
        while (!m_line.empty() && m_line.back().piece->kind == Kind::Blank) m_line.pop_back();
        setLine(height);
        m_lowest = std::min(m_lowest, base);
        m_line.clear();
        m_x = 0.0;
        m_newParagraph = false;
        m_ended = true;
    }
    [[nodiscard]] bool columnIsFull(double base) const {
        if (m_column + 1 >= m_box.columns || m_box.columnHeights.empty()) return false;
        const double height = m_column < m_box.columnHeights.size() ? m_box.columnHeights[m_column]
                                                                    : m_box.columnHeights.back();
        return height > 0.0 && base < -height * kSlack;
    }
    void nextColumn() {
        if (m_column + 1 >= m_box.columns) return;
        finishColumn();
        ++m_column;
        m_columnLeft += m_box.width + m_box.gutter;
        m_columnWidth = 0.0;
        m_first = true;
        m_base = 0.0;
    }

    void setLine(double height) {
        if (m_line.empty()) return;
        const TextFormat& format = formatOf(*m_line.front().piece);
        const double width = m_line.back().x + m_line.back().width;
        m_columnWidth = std::max(m_columnWidth, width);
        const int across = format.across == 'c'   ? 1
                           : format.across == 'r' ? 2
                           : format.across == 'l' ? 0
                                                  : m_box.across;
        m_rows.push_back({m_result.parts.size(), m_result.lines.size(), width, across});
        for (const Item& item : m_line) setItem(item, height);
    }

    void setItem(const Item& item, double height) {
        const TextPiece& piece = *item.piece;
        const TextFormat& format = formatOf(piece);
        if (piece.kind == Kind::Stack)
            setStack(item, height);
        else if (piece.kind == Kind::Word)
            m_result.parts.push_back({piece.text, piece.format, item.x, m_base, item.width});
        const auto line = [&](double y) {
            m_result.lines.push_back(
                {piece.format, item.x, m_base + y, item.x + item.width, m_base + y});
        };
        if (format.under) line(-kUnderline * format.height);
        if (format.over) line((1.0 + kUnderline) * format.height);
        if (format.struck) line(format.height / 2);
    }

    void setStack(const Item& item, double height) {
        const TextPiece& piece = *item.piece;
        const TextFormat& format = formatOf(piece);
        const double own = format.height;
        const double above = widthOf(piece.text, format, m_fonts);
        const double below = widthOf(piece.below, format, m_fonts);
        const double gap = kStackGap * own;
        const double whole = 2 * own + gap;
        const double foot = m_base + (format.raised == 0   ? 0.0
                                      : format.raised == 1 ? (height - whole) / 2
                                                           : height - whole);
        if (piece.between == '#') {
            m_result.parts.push_back({piece.text, piece.format, item.x, foot + own, above});
            m_result.parts.push_back(
                {piece.below, piece.format, item.x + above + gap, foot, below});
            m_result.lines.push_back({piece.format, item.x + above - gap / 2, foot,
                                      item.x + above + gap * 1.5, foot + whole - gap});
            return;
        }
        // A limit stands at the left, parts of a fraction in the middle.
        const double share = piece.between == '/' ? 0.5 : 0.0;
        m_result.parts.push_back({piece.text, piece.format, item.x + share * (item.width - above),
                                  foot + own + gap, above});
        m_result.parts.push_back(
            {piece.below, piece.format, item.x + share * (item.width - below), foot, below});
        if (piece.between == '/')
            m_result.lines.push_back({piece.format, item.x, foot + own + gap / 2,
                                      item.x + item.width, foot + own + gap / 2});
    }

    /// Moves the lines of a column to the side where they belong: how wide they all are is known
    /// now.
    void finishColumn() {
        const double room = m_box.width > 0.0 ? m_box.width : m_columnWidth;
        for (std::size_t i = 0; i < m_rows.size(); ++i) {
            const Row& row = m_rows[i];
            const bool last = i + 1 == m_rows.size();
            const double by = m_columnLeft + row.across * 0.5 * (room - row.width);
            const std::size_t parts = last ? m_result.parts.size() : m_rows[i + 1].part;
            const std::size_t lines = last ? m_result.lines.size() : m_rows[i + 1].line;
            for (std::size_t k = row.part; k < parts; ++k) m_result.parts[k].x += by;
            for (std::size_t k = row.line; k < lines; ++k) {
                m_result.lines[k].x1 += by;
                m_result.lines[k].x2 += by;
            }
        }
        m_rows.clear();
    }

    struct Row {
        std::size_t part = 0;
        std::size_t line = 0;
        double width = 0.0;
        int across = 0;
    };
    const FormattedText& m_text;
    const TextBox& m_box;
    Fonts& m_fonts;
    TextLayout m_result;
    std::vector<Item> m_line;
    std::vector<Row> m_rows;  ///< of the column
    double m_x = 0.0;
    double m_base = 0.0;
    double m_lowest = 0.0;
    bool m_first = true;  ///< no line stands in the column yet
    bool m_newParagraph = true;
    bool m_ended = true;  ///< the line, and nothing has come since
    std::size_t m_column = 0;
    double m_columnLeft = 0.0;
    double m_columnWidth = 0.0;
};

}  // namespace

double widthOf(const std::string& text, const TextFormat& format, Fonts& fonts) {
    const std::uint32_t font = fonts.find(format.font);
    const double size = format.height / fonts.capitalHeight(font);
    return fonts.width(font, text) * size * format.widened * format.tracking;
}

TextLayout layOut(const FormattedText& text, const TextBox& box, Fonts& fonts) {
    return Setter(text, box, fonts).run();
}

}  // namespace mor::tool
