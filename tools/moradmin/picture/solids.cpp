#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

namespace {

constexpr double kWhole = 2 * std::numbers::pi;
constexpr std::size_t kEllipseNumbers = 10;
constexpr std::size_t kTransformNumbers = 13;
constexpr int kHeadLines = 3;
constexpr int kExchanged = 159;  ///< a letter and the one that stands for it, together

/// The text of a modeller of solids in a record, as it was before it was made unreadable.
std::string modelText(const EntityRecord& record) {
    std::string text;
    for (const host::GroupView& group : record.groups()) {
        // A long line goes on in groups 3, which stand before its end or behind its beginning.
        if (group.code == 3 && text.ends_with('\n') && !text.ends_with("#\n")) text.pop_back();
        if (group.code != 1 && group.code != 3) continue;
        for (const char c : group.value)
            text += c > ' ' && c < 0x7F ? static_cast<char>(kExchanged - c) : c;
        if (group.code == 1) text += '\n';
    }
    return text;
}

/// One record of the modeller: words up to a '#'.
using Words = std::vector<std::string_view>;

std::vector<Words> recordsOf(std::string_view text) {
    std::vector<Words> records(1);
    constexpr std::string_view kBlanks = " \n\r\t";
    for (int line = 0; line < kHeadLines; ++line)
        text.remove_prefix(std::min(text.find('\n') + 1, text.size()));
    for (std::size_t at = text.find_first_not_of(kBlanks); at < text.size();) {
        const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
        const std::string_view word = text.substr(at, end - at);
        if (word == "#")
            records.emplace_back();
        else
            records.back().push_back(word);
        at = text.find_first_not_of(kBlanks, end);
    }
    records.pop_back();
    return records;
}

double dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// The edges of a body, straight ones and pieces of circles and ellipses.
class Body {
public:
    Body(Pencil& pen, std::vector<Words> records)
        : m_pen(pen), m_records(std::move(records)), m_path(pen.path()) {}

    bool draw() {
        for (const Words& record : m_records)
            if (isOfType(record, "transform")) readTransform(record);
        for (const Words& record : m_records) {
            if (isOfType(record, "edge")) edge(record);
            if (!record.empty() && record[0].ends_with("-surface") && record[0] != "plane-surface")
                m_whole = false;
        }
        if (m_path.empty() || !m_path.isFinite()) return false;
        m_pen.stroke(m_path);
        if (!m_whole)
            ++m_pen.desk().partly[m_pen.record().type() + ": only its straight and round edges"];
        return true;
    }

private:
    static bool isOfType(const Words& record, std::string_view type) {
        return !record.empty() && record[0] == type;
    }
    /// The record that a word of the form $7 names; null where there is none.
    [[nodiscard]] const Words* target(std::string_view word) const {
        if (!word.starts_with('$')) return nullptr;
        const auto number = readInteger(word.substr(1));
        if (!number || *number < 0) return nullptr;
        const auto at = static_cast<std::size_t>(*number);
        return at < m_records.size() ? &m_records[at] : nullptr;
    }
    /// The numbers behind the last name of another record.
    static std::vector<double> numbersOf(const Words& record) {
        const auto last = std::find_if(record.rbegin(), record.rend(),
                                       [](std::string_view word) { return word.starts_with('$'); });
        std::vector<double> numbers;
        for (auto word = last.base(); word != record.end(); ++word) {
            const auto number = readReal(*word);
            if (!number) break;
            numbers.push_back(*number);
        }
        return numbers;
    }
    void readTransform(const Words& record) {
        std::vector<double> n = numbersOf(record);
        // Newer ones have a number more in front.
        if (n.size() > kTransformNumbers) n.erase(n.begin(), n.end() - kTransformNumbers);
        if (n.size() < kTransformNumbers) return;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                m_matrix.rows[row][column] = n[column * 3 + row] * n[12];
            m_matrix.rows[row][3] = n[9 + row];
        }
    }
    /// Where a vertex lies, by its point.
    [[nodiscard]] const Words* pointOf(const Words& vertex) const {
        for (const std::string_view word : vertex)
            if (const Words* found = target(word); found != nullptr && isOfType(*found, "point"))
                return found;
        return nullptr;
    }
    void edge(const Words& record) {
        std::vector<Point> ends;
        const Words* curve = nullptr;
        bool backwards = false;
        for (const std::string_view word : record) {
            if (curve != nullptr && word == "reversed") backwards = true;
            const Words* found = target(word);
            if (found == nullptr || found->empty()) continue;
            if ((*found)[0].ends_with("-curve")) curve = found;
            if (!isOfType(*found, "vertex")) continue;
            const Words* point = pointOf(*found);
            const std::vector<double> n =
                point == nullptr ? std::vector<double>() : numbersOf(*point);
            if (n.size() >= 3) ends.push_back({n[n.size() - 3], n[n.size() - 2], n[n.size() - 1]});
        }
        if (curve == nullptr || ends.size() < 2) return;  // the tip of a cone
        if ((*curve)[0] == "straight-curve") {
            m_path.moveTo(place(ends[0]));
            m_path.lineTo(place(ends[1]));
        } else if ((*curve)[0] == "ellipse-curve") {
            arc(numbersOf(*curve), ends[0], ends[1], backwards);
        } else {
            m_whole = false;
        }
    }
    [[nodiscard]] Point place(const Point& p) const {
        return m_pen.place(transformed(m_matrix, p));
    }
    void arc(const std::vector<double>& n, const Point& from, const Point& to, bool backwards) {
        if (n.size() < kEllipseNumbers) return;
        const Point centre{n[0], n[1], n[2]};
        const Point u{n[6], n[7], n[8]};
        const Point v = n[9] * cross({n[3], n[4], n[5]}, u);
        const auto angle = [&](const Point& p) {
            return std::atan2(dot(p - centre, v) / dot(v, v), dot(p - centre, u) / dot(u, u));
        };
        const double begin = angle(from);
        double span = turnTo(angle(to) - begin, kWhole);
        if (backwards && span < kWhole) span -= kWhole;
        m_path.moveTo(place(from));
        m_path.along(m_pen.place(Curve{transformed(m_matrix, centre), turned(m_matrix, u),
                                       turned(m_matrix, v)}),
                     begin, begin + span);
    }

    Pencil& m_pen;
    std::vector<Words> m_records;
    Path m_path;
    CMORMathTransMatrix m_matrix;
    bool m_whole = true;
};

}  // namespace

bool drawBody(Pencil& pen) {
    const std::string text = modelText(pen.record());
    return !text.empty() && Body(pen, recordsOf(text)).draw();
}

}  // namespace mor::tool
