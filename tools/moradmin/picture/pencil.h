#pragma once

#include "tools/moradmin/picture/looks.h"
#include "tools/moradmin/picture/scene.h"
#include "tools/moradmin/picture/text_layout.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

class Pencil;

/// What all pencils share.
struct Desk {
    AcApDocument* document;
    Scene& scene;
    Fonts& fonts;
    Looks& looks;
    const Palette& palette;
    host::DrawingSettings settings;
    /// Draws a block of the pencil's drawing, by its name there, in place of a part of the pencil's
    /// entity; `own` carries its coordinates to those of the entity. False where there is none.
    std::function<bool(const Pencil& pen, const std::string& block, const CMORMathTransMatrix& own)>
        drawBlock;
    std::size_t read = 0;  ///< bytes of records that were read besides those of entities
    std::map<std::string, std::size_t> partly{};  ///< what is drawn in part, why, and how often
    /// The dashes that were asked for last.
    struct Dashes {
        const LineType* type = nullptr;
        double scale = 0.0;
        std::uint32_t dash = 0;  ///< of the scene
    };
    Dashes dashes{};
    /// The font that was asked for last.
    FontWish fontWish{};
    std::optional<std::uint32_t> font{};
};

/// Where letters stand: a point, and the directions of their lines and of their height. One unit
/// there is one unit of the text.
struct Sheet {
    Point at{};
    Point right{};
    Point up{};

    [[nodiscard]] Point spot(double x, double y) const { return at + x * right + y * up; }
};

/// Draws one entity: knows where it lies and how it looks.
class Pencil {
public:
    Pencil(Desk& desk, mor::EntityName name, const EntityRecord& record,
           const CMORMathTransMatrix& placement, const Look& look, const std::string& reference)
        : m_desk(desk),
          m_name(name),
          m_record(record),
          m_placement(placement),
          m_look(look),
          m_reference(reference) {}

    [[nodiscard]] Desk& desk() const { return m_desk; }
    [[nodiscard]] mor::EntityName name() const { return m_name; }
    [[nodiscard]] const EntityRecord& record() const { return m_record; }
    [[nodiscard]] const CMORMathTransMatrix& placement() const { return m_placement; }
    [[nodiscard]] const Look& look() const { return m_look; }
    [[nodiscard]] const std::string& reference() const { return m_reference; }
    /// A symbol's name within the record's drawing as the document knows it.
    [[nodiscard]] std::string qualified(const std::string& symbol) const {
        return Looks::qualified(m_reference, symbol);
    }
    /// The record of a handle in the same drawing.
    [[nodiscard]] std::optional<EntityRecord> recordOf(const std::string& handle) const;

    [[nodiscard]] Path path() const { return m_desk.scene.path(); }
    [[nodiscard]] Point place(const Point& point) const { return transformed(m_placement, point); }
    [[nodiscard]] Point turn(const Point& way) const { return turned(m_placement, way); }
    [[nodiscard]] Curve place(const Curve& curve) const {
        return {place(curve.centre), turn(curve.u), turn(curve.v)};
    }
    /// By how much the placement scales lengths, seen from above; about.
    [[nodiscard]] double scale() const;

    [[nodiscard]] Style line() const { return line(m_look.colour, m_look.lineType); }
    /// Whole where the line type is null.
    [[nodiscard]] Style line(int colour, const LineType* lineType) const;
    /// A line that belongs to letters of that height on the picture.
    [[nodiscard]] Style ruled(int colour, double height) const;
    [[nodiscard]] Style area() const { return area(m_look.colour); }
    [[nodiscard]] Style area(int colour) const;

    void stroke(const Path& path) {
        stroke(path, line());
        lettersAlong(path);
    }
    void stroke(const Path& path, const Style& style) { m_desk.scene.stroke(path, style); }
    void fill(const Path& path) { m_desk.scene.fill(path, area()); }
    void fill(const Path& path, const Style& style) { m_desk.scene.fill(path, style); }
    /// The texts of the line type along a path that was drawn with it.
    void lettersAlong(const Path& path);
    /// Lines from point to point, in space.
    void polyline(const std::vector<Point>& points, bool closed);

    /// Letters that begin at a point of the sheet.
    void letters(const Sheet& sheet, double x, double y, const std::string& text,
                 const TextFormat& format);
    /// The upper left corner of the layout lies at that point of the sheet.
    void letters(const Sheet& sheet, double x, double y, const FormattedText& text,
                 const TextLayout& layout);

private:
    /// How large patterns of lines are.
    [[nodiscard]] double patternScale() const;
    void letterAt(const std::vector<Spot>& line, double at, const LineText& text);

    Desk& m_desk;
    mor::EntityName m_name;
    const EntityRecord& m_record;
    const CMORMathTransMatrix& m_placement;
    const Look& m_look;
    const std::string& m_reference;
};

}  // namespace mor::tool
