#include "platform/entity_calls.h"
#include "tools/moradmin/picture/drawers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

namespace mor::tool {

namespace {

// Flags of old-style meshes, and of the vertices behind them.
constexpr int kClosedAlong = 1;
constexpr int kClosedAcross = 32;
constexpr int kFaces = 64;
constexpr int kSplineFrame = 16;
constexpr int kMeshVertex = 64;
constexpr int kFace = 128;

using Edge = std::pair<std::int64_t, std::int64_t>;

/// Draws lines between points, each once, as a wire.
class Wire {
public:
    Wire(Pencil& pen, const std::vector<Point>& points) : m_pen(pen), m_points(points) {}

    void edge(std::int64_t from, std::int64_t to) {
        const auto count = static_cast<std::int64_t>(m_points.size());
        if (from < 0 || to < 0 || from >= count || to >= count || from == to) return;
        if (!m_known.insert(std::minmax(from, to)).second) return;
        m_path.moveTo(m_pen.place(m_points[static_cast<std::size_t>(from)]));
        m_path.lineTo(m_pen.place(m_points[static_cast<std::size_t>(to)]));
    }
    bool draw() {
        if (m_path.empty()) return false;
        m_pen.stroke(m_path);
        return m_path.isFinite();
    }

private:
    Pencil& m_pen;
    const std::vector<Point>& m_points;
    std::set<Edge> m_known;
    Path m_path = m_pen.path();
};

/// The vertices behind an old-style mesh, and the faces between them.
struct OldMesh {
    explicit OldMesh(Pencil& pen) {
        ads_name at{};
        pen.name().copyTo(at);
        EntityRecord vertex;
        while (acdbEntNext(at, at) == RTNORM) {
            vertex.read(pen.desk().document, mor::EntityName(at));
            pen.desk().read += vertex.bytes();
            if (vertex.type() != "VERTEX") break;
            const int flags = vertex.integer(70);
            if ((flags & kFace) != 0 && (flags & kMeshVertex) == 0) {
                faces.push_back({vertex.integer(71), vertex.integer(72), vertex.integer(73),
                                 vertex.integer(74)});
            } else {
                (flags & kSplineFrame) != 0 ? frame.push_back(vertex.point(10, {}))
                                            : points.push_back(vertex.point(10, {}));
            }
        }
    }
    std::vector<Point> points;
    std::vector<Point> frame;  ///< control points of a smoothed one
    std::vector<std::array<int, 4>> faces;
};

/// Rows and columns of points, joined to their neighbours.
bool drawGrid(Pencil& pen, const std::vector<Point>& points, int rows, int columns, int flags) {
    if (rows < 1 || columns < 1 ||
        static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) > points.size())
        return false;
    Wire wire(pen, points);
    const auto at = [&](int row, int column) {
        return static_cast<std::int64_t>(row % rows) * columns + column % columns;
    };
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            if (row + 1 < rows || (flags & kClosedAlong) != 0)
                wire.edge(at(row, column), at(row + 1, column));
            if (column + 1 < columns || (flags & kClosedAcross) != 0)
                wire.edge(at(row, column), at(row, column + 1));
        }
    return wire.draw();
}

/// Faces one after the other: how many corners each has, and their numbers.
void wireFaces(Wire& wire, const std::vector<std::int64_t>& faces) {
    for (std::size_t i = 0; i < faces.size();) {
        const auto count = static_cast<std::size_t>(std::max<std::int64_t>(faces[i], 0));
        for (std::size_t k = 1; k <= count && i + count < faces.size(); ++k)
            wire.edge(faces[i + k], faces[i + (k == count ? 1 : k + 1)]);
        i += count + 1;
    }
}

}  // namespace

bool drawSolid(Pencil& pen) {
    const EntityRecord& record = pen.record();
    if (!record.point(10) || !record.point(11) || !record.point(12)) return false;
    const host::PlaneAxes axes = record.plane();
    // The last two corners stand crosswise; a missing last one repeats the third.
    const Point third = *record.point(12);
    Path path = pen.path();
    for (const Point& corner :
         {*record.point(10), *record.point(11), record.point(13, third), third})
        path.join(pen.place(fromPlane(axes, corner)));
    path.close();
    pen.fill(path);
    return path.isFinite();
}

bool drawFace(Pencil& pen) {
    const EntityRecord& record = pen.record();
    if (!record.point(10) || !record.point(11) || !record.point(12)) return false;
    const Point third = *record.point(12);
    const std::array<Point, 4> corners = {*record.point(10), *record.point(11), third,
                                          record.point(13, third)};
    const auto hidden = static_cast<unsigned>(record.integer(70));
    Path path = pen.path();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point& to = corners[(i + 1) % corners.size()];
        if ((hidden & (1U << i)) != 0 || corners[i] == to) continue;
        path.moveTo(pen.place(corners[i]));
        path.lineTo(pen.place(to));
    }
    if (!path.empty()) pen.stroke(path);
    return path.isFinite();  // with all edges hidden there is nothing to be seen
}

bool drawOldMesh(Pencil& pen) {
    const EntityRecord& record = pen.record();
    const OldMesh mesh(pen);
    const int flags = record.integer(70);
    if ((flags & kFaces) == 0) {
        const bool smooth = record.integer(75) != 0 && record.integer(73) > 0;
        return drawGrid(pen, mesh.points, record.integer(smooth ? 73 : 71),
                        record.integer(smooth ? 74 : 72), flags);
    }
    Wire wire(pen, mesh.points);
    for (const std::array<int, 4>& face : mesh.faces) {
        std::size_t corners = 0;
        while (corners < face.size() && face[corners] != 0) ++corners;
        // A number below 0: the edge that begins there is hidden.
        for (std::size_t i = 0; i < corners; ++i)
            if (face[i] > 0) wire.edge(face[i] - 1, std::abs(face[(i + 1) % corners]) - 1);
    }
    return wire.draw() || (!mesh.points.empty() && !mesh.faces.empty());  // all edges are hidden
}

bool drawMesh(Pencil& pen) {
    std::vector<Point> points;
    std::vector<std::int64_t> edges;
    std::vector<std::int64_t> faces;
    int list = 0;  // the group that says how many there are
    for (const host::GroupView& group : pen.record().groups()) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code >= 92 && group.code <= 95) list = group.code;
        if (group.code == 10) points.push_back({value, 0.0, 0.0});
        if (group.code == 20 && !points.empty()) points.back()[1] = value;
        if (group.code == 30 && !points.empty()) points.back()[2] = value;
        if (group.code != 90) continue;
        if (list == 93) faces.push_back(static_cast<std::int64_t>(value));
        if (list == 94) edges.push_back(static_cast<std::int64_t>(value));
    }
    Wire wire(pen, points);
    for (std::size_t i = 0; i + 1 < edges.size(); i += 2) wire.edge(edges[i], edges[i + 1]);
    wireFaces(wire, faces);
    return wire.draw();
}

}  // namespace mor::tool
