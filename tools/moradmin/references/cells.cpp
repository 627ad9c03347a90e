#include "tools/moradmin/references/cells.h"

#include "host/host.h"
#include "tools/moradmin/picture/geometry.h"

#include <algorithm>

namespace mor::tool {

namespace {

int columnsOf(const EntityRecord& insert) { return std::max(insert.integer(70, 1), 1); }
int rowsOf(const EntityRecord& insert) { return std::max(insert.integer(71, 1), 1); }

CMORMathTransMatrix moved(const CMORMathTransMatrix& placement, const Point& by) {
    CMORMathTransMatrix result = placement;
    const Point step = turned(placement, by);
    for (std::size_t row = 0; row < 3; ++row) result.rows[row][3] += step[row];
    return result;
}

}  // namespace

std::size_t cellCount(const EntityRecord& insert) {
    return static_cast<std::size_t>(columnsOf(insert)) * static_cast<std::size_t>(rowsOf(insert));
}

void forEachCell(const EntityRecord& insert, const CMORMathTransMatrix& owner,
                 const std::function<bool(const CMORMathTransMatrix& owner)>& visit) {
    const host::PlaneAxes axes = insert.plane();
    const auto [sine, cosine] = host::sineAndCosine(insert.real(50));
    const Point along = fromPlane(axes, {cosine, sine, 0.0});
    const Point upwards = fromPlane(axes, {-sine, cosine, 0.0});
    const int columns = columnsOf(insert);
    const int rows = rowsOf(insert);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const Point by = column * insert.real(44) * along + row * insert.real(45) * upwards;
            if (!visit(moved(owner, by))) return;
        }
}

}  // namespace mor::tool
