#pragma once

#include "tools/moradmin/picture/outline.h"
#include "tools/moradmin/picture/shapes.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace mor::tool {

/// From which record an element of a picture comes.
struct Origin {
    std::string handle;
    std::string layer;  ///< as the drawing knows it
    std::string type;
    std::string reference;  ///< by the path of references; empty for the drawing itself
};

/// An SVG picture in plan view. Its coordinates are those of the drawing, y upwards; where they are
/// large, `shift` is taken away from all of them.
class Picture {
public:
    explicit Picture(const Point& shift) : m_shift(shift) {}

    [[nodiscard]] const Point& shift() const { return m_shift; }
    [[nodiscard]] std::size_t elements() const { return m_elements; }
    /// How long the picture is so far; about.
    [[nodiscard]] std::size_t bytes() const { return m_body.size() + m_missingBytes; }

    void add(const Origin& origin, const Shape& shape, const std::string& colour);
    /// What follows, up to `close`, belongs to that record. Leaves no trace when nothing follows.
    struct Group {
        std::size_t begin = 0;
        std::size_t elements = 0;
    };
    [[nodiscard]] Group open(const Origin& origin, const std::string& block);
    void close(const Group& group);
    /// A dashed box at a place where something is missing, with a text in it.
    void addMissing(const Origin& origin, const Point& place, const std::string& text);

    void write(std::ostream& out, const std::string& title) const;

private:
    struct Missing {
        std::string origin;  ///< as attributes
        Point place{};
        std::string text;
    };
    [[nodiscard]] std::string attributesOf(const Origin& origin);
    [[nodiscard]] std::string missingBoxes(const Extent& drawn, Extent& all) const;

    Point m_shift;
    std::string m_body;
    std::string m_layer;  ///< of the element before, and what is written of it
    std::string m_layerAttribute;
    std::vector<Missing> m_missing;
    std::size_t m_missingBytes = 0;
    Extent m_extent;
    std::size_t m_elements = 0;
};

}  // namespace mor::tool
