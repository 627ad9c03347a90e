#include "tools/moradmin/picture/dimension_look.h"
#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <cmath>

namespace mor::tool {

namespace {

constexpr double kSmallest = 1e-9;
constexpr double kUnderlayShare = 0.3;  ///< of the box of a missing reference

/// Points of a group that stands several times, in two dimensions.
std::vector<Spot> spotsOf(const EntityRecord& record, int code) {
    std::vector<Spot> spots;
    for (const host::GroupView& group : record.groups()) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == code) spots.push_back({value, 0.0});
        if (group.code == code + 10 && !spots.empty()) spots.back().y = value;
    }
    return spots;
}

/// Two corners as four.
std::vector<Spot> cornersOf(std::vector<Spot> spots) {
    if (spots.size() != 2) return spots;
    const Spot a = spots[0];
    const Spot b = spots[1];
    return {a, {b.x, a.y}, b, {a.x, b.y}};
}

/// The edge of what shows of an image, in coordinates of its owner.
std::vector<Point> imageBoundary(const EntityRecord& record) {
    const Point at = record.point(10, {});
    const Point u = record.point(11, {1.0, 0.0, 0.0});
    const Point v = record.point(12, {0.0, 1.0, 0.0});
    const double width = record.real(13, 1.0);
    const double height = record.real(23, 1.0);
    std::vector<Spot> spots = cornersOf(spotsOf(record, 14));
    const bool wipeout = record.type() == "WIPEOUT";
    if (spots.size() < 3 || (!wipeout && record.integer(280) == 0))
        spots = cornersOf({{-0.5, -0.5}, {width - 0.5, height - 0.5}});
    // Pixels are counted from the middle of the one in the upper left corner.
    const Point origin = at + 0.5 * u - 0.5 * v;
    std::vector<Point> points;
    points.reserve(spots.size());
    for (const Spot& spot : spots) points.push_back(origin + spot.x * u + (height - spot.y) * v);
    return points;
}

/// A text in the middle of a frame, along its lower side.
void label(Pencil& pen, const std::vector<Point>& corners, const std::string& text) {
    if (text.empty() || corners.size() < 3) return;
    Point middle{};
    for (const Point& corner : corners)
        middle = middle + (1.0 / static_cast<double>(corners.size())) * corner;
    const Point along = corners[1] - corners[0];
    const double length = std::hypot(along[0], along[1]);
    if (!(length > kSmallest)) return;
    Point right = (1.0 / length) * along;
    if (right[0] < -kSmallest) right = -1.0 * right;  // never upside down
    TextFormat format;
    format.height = 1.0;
    const double natural = widthOf(text, format, pen.desk().fonts);
    if (!(natural > 0.0)) return;
    format.height = std::min(0.8 * length / natural, length / 12);
    const Point up{-right[1], right[0], 0.0};
    const Sheet sheet{pen.place(middle), pen.turn(right), pen.turn(up)};
    pen.letters(sheet, -0.5 * natural * format.height, -format.height / 2, text, format);
}

/// The path that the record of a definition holds.
std::string definedPath(const Pencil& pen) {
    const auto definition = pen.recordOf(pen.record().text(340));
    return definition ? definition->text(1) : std::string();
}

}  // namespace

bool drawImage(Pencil& pen) {
    if (!pen.record().point(10)) return false;
    const std::vector<Point> corners = imageBoundary(pen.record());
    pen.polyline(corners, true);
    label(pen, corners, definedPath(pen));
    return true;
}

bool drawWipeout(Pencil& pen) {
    if (!pen.record().point(10)) return false;
    Path path = pen.path();
    for (const Point& corner : imageBoundary(pen.record())) path.join(pen.place(corner));
    path.close();
    pen.desk().scene.mask(path);
    return path.isFinite();
}

bool drawUnderlay(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const auto at = record.point(10);
    if (!at) return false;
    const std::string path = definedPath(pen);
    const std::vector<Spot> spots = cornersOf(spotsOf(record, 11));
    const host::PlaneAxes axes = record.plane();
    if (spots.size() < 3) {  // how large it is stands in the other file alone
        pen.desk().scene.missing(pen.place(fromPlane(axes, *at)), path, kUnderlayShare);
        return true;
    }
    const auto [sine, cosine] = host::sineAndCosine(record.real(50));
    std::vector<Point> corners;
    for (const Spot& spot : spots) {
        const double x = spot.x * record.real(41, 1.0);
        const double y = spot.y * record.real(42, 1.0);
        const Point turned{x * cosine - y * sine, x * sine + y * cosine, 0.0};
        corners.push_back(fromPlane(axes, *at + turned));
    }
    pen.polyline(corners, true);
    label(pen, corners, path);
    return true;
}

bool drawShape(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const auto at = record.point(10);
    const double size = record.real(40);
    if (!at || !(size > 0.0)) return false;
    const auto [sine, cosine] = host::sineAndCosine(record.real(50));
    const host::PlaneAxes axes = record.plane();
    const Point right = size * record.real(41, 1.0) * fromPlane(axes, {cosine, sine, 0.0});
    const Point up = size * fromPlane(axes, {-sine, cosine, 0.0});
    const Point corner = fromPlane(axes, *at);
    const std::vector<Point> corners = {corner, corner + right, corner + right + up, corner + up};
    pen.polyline(corners, true);
    label(pen, corners, record.text(2));
    ++pen.desk().partly["SHAPE, as a frame: its form lies in a file of shapes"];
    return true;
}

bool drawOleFrame(Pencil& pen) {
    const auto from = pen.record().point(10);
    const auto to = pen.record().point(11);
    if (!from || !to) return false;
    const std::vector<Point> corners = {
        *from, {(*to)[0], (*from)[1], (*from)[2]}, *to, {(*from)[0], (*to)[1], (*to)[2]}};
    pen.polyline(corners, true);
    label(pen, corners, pen.record().text(3));
    return true;
}

bool drawTolerance(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const auto at = record.point(10);
    const DimensionLook look(pen);
    const double height = look.length(kDimTextHeight, 0.18);
    const std::string text = record.text(1);
    if (!at || text.empty() || !(height > 0.0)) return false;
    const Point right = record.point(11, Point{1.0, 0.0, 0.0});
    const Point up = cross(record.plane()[2], right);
    const Sheet sheet{pen.place(*at), pen.turn(right), pen.turn(up)};
    const int colour = look.colour(kDimTextColour, pen.look().colour);
    const double gap = height / 2;
    double y = 0.0;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        double x = 0.0;
        for (std::size_t cell = begin; cell <= end;) {
            const std::size_t next = std::min(text.find("%%v", cell), end);
            TextFormat first;
            first.height = height;
            first.colour = colour;
            const FormattedText shown =
                readFormats(text.substr(cell, next - cell), first, colour, colour);
            cell = next + 3;
            if (shown.pieces.empty()) continue;
            TextBox box;
            box.height = height;
            const TextLayout layout = layOut(shown, box, pen.desk().fonts);
            const double width = layout.width + 2 * gap;
            Path frame = pen.path();
            frame.moveTo(sheet.spot(x, y + height));
            for (const auto& [dx, dy] :
                 {std::pair(width, height), std::pair(width, -height), std::pair(0.0, -height)})
                frame.lineTo(sheet.spot(x + dx, y + dy));
            frame.close();
            pen.stroke(frame, pen.line(look.colour(kDimLineColour, pen.look().colour), nullptr));
            pen.letters(sheet, x + gap, y + height / 2, shown, layout);
            x += width;
        }
        y -= 2 * height;
        begin = end + 1;
    }
    return true;
}

}  // namespace mor::tool
