#pragma once

#include "tools/moradmin/picture/pencil.h"

#include <map>
#include <string>

namespace mor::tool {

/// The variables of the dimension style of an entity, with the entity's own in front.
class DimensionLook {
public:
    explicit DimensionLook(const Pencil& pen);

    /// A variable by its group code in the style; `missing` where neither has it.
    [[nodiscard]] double real(int code, double missing) const;
    [[nodiscard]] std::string text(int code) const;
    /// A length, with the style's scale.
    [[nodiscard]] double length(int code, double missing) const {
        return real(code, missing) * m_scale;
    }
    /// A colour, from the group of a number; the entity's where it is taken from there.
    [[nodiscard]] int colour(int code, int otherwise) const;

private:
    std::map<int, std::string> m_own;
    const EntityRecord* m_style;
    double m_scale = 1.0;
};

// Group codes of variables.
inline constexpr int kDimScale = 40;
inline constexpr int kDimArrowSize = 41;
inline constexpr int kDimOffset = 42;
inline constexpr int kDimExtension = 44;
inline constexpr int kDimTextHeight = 140;
inline constexpr int kDimGap = 147;
inline constexpr int kDimLineColour = 176;
inline constexpr int kDimTextColour = 178;
inline constexpr int kDimTextAbove = 77;
inline constexpr int kDimDecimals = 271;
inline constexpr int kDimLeaderArrow = 341;
inline constexpr int kDimArrow = 342;

/// The head of an arrow whose tip is at a point and that comes from another; both in coordinates of
/// the entity. `block`: the handle of the record of the block that shows it; without one it is a
/// filled triangle.
void drawArrow(Pencil& pen, const Point& tip, const Point& from, double size, int colour,
               const std::string& block);

}  // namespace mor::tool
