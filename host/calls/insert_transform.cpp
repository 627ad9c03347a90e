#include "host/documents/document.h"
#include "host/documents/symbols.h"
#include "host/placement.h"
#include "host/text/group_codes.h"
#include "platform/geometry.h"

#include <array>
#include <optional>

namespace mor::host {

using Vector = std::array<double, 3>;

/// q = scale * (p - base); turned about z; moved to the insertion point; then from the plane's axes
/// (arbitrary axis rule) to the owner's. The first cell of an array is the reference itself.
static CMORMathTransMatrix insertMatrix(const GroupList& insert, const Vector& base) {
    const auto [axisX, axisY, normal] = planeAxes(insert.pointOf(210, {0.0, 0.0, 1.0}));
    const Vector place = insert.pointOf(10, {});
    const Vector scale = {insert.realOf(41, 1.0), insert.realOf(42, 1.0), insert.realOf(43, 1.0)};
    const auto [sine, cosine] = sineAndCosine(insert.realOf(50, 0.0));
    CMORMathTransMatrix matrix;
    for (std::size_t row = 0; row < 3; ++row) {
        auto& target = matrix.rows[row];
        target[0] = scale[0] * (axisX[row] * cosine + axisY[row] * sine);
        target[1] = scale[1] * (axisY[row] * cosine - axisX[row] * sine);
        target[2] = scale[2] * normal[row];
        target[3] = place[0] * axisX[row] + place[1] * axisY[row] + place[2] * normal[row];
        for (std::size_t column = 0; column < 3; ++column)
            target[3] -= target[column] * base[column];
    }
    return matrix;
}

static std::optional<CMORMathTransMatrix> matrixOf(EntityName entity) {
    const Located found = locate(entity);
    if (!found || found.drawing->entry(found.number).has(kErased) ||
        found.drawing->typeOf(found.number) != "INSERT")
        return std::nullopt;
    const GroupList insert = found.drawing->groupsOf(found.number);
    const Group* block = insert.find(kNameCode);
    if (block == nullptr) return std::nullopt;
    const std::wstring name = found.qualified("BLOCK", found.drawing->decoded(*block));
    const FoundBlock inserted = resolveBlock(*currentDocument(), name);
    if (inserted.block == kNoContainer) return std::nullopt;
    const Vector base = baseOf(*currentDocument(), inserted.owner, inserted.block);
    return insertMatrix(insert, base);
}

}  // namespace mor::host

bool CMORAdsTransformation::loadFromEntity(const ads_name name) {
    const auto loaded = mor::host::matrixOf(mor::EntityName(name));
    if (!loaded) return false;
    matrix = *loaded;
    return true;
}
