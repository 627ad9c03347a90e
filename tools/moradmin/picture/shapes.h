#pragma once

#include "tools/moradmin/picture/geometry.h"
#include "tools/moradmin/picture/outline.h"
#include "tools/moradmin/references/entity_record.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace mor::tool {

/// What an entity looks like from above.
struct Shape {
    enum class Kind { Line, Area, Dot, Text };
    Kind kind = Kind::Line;
    std::string data;  ///< of the path, or the text
    Extent extent;
    // Of a text: its matrix without the position, the position, and how it stands there.
    Point right{};
    Point down{};
    Point at{};
    double size = 0.0;        ///< of the font
    double drop = 0.0;        ///< from the position down to the base line
    std::string_view anchor;  ///< start, middle or end
    double width = 0.0;       ///< to be filled; 0 for as it comes
};

/// The shape of an entity as `placement` carries it; none for what cannot be drawn. `origin` is
/// taken away from all coordinates. Adds to `read` how much was read of other records.
[[nodiscard]] std::optional<Shape> shapeOf(const AcApDocument* document, mor::EntityName name,
                                           const EntityRecord& record,
                                           const CMORMathTransMatrix& placement,
                                           const Point& origin, std::size_t& read);

/// What a text shows: %%d is a degree sign, %%nnn the character of that number, and so on.
[[nodiscard]] std::string shownText(const std::string& text);

}  // namespace mor::tool
