#pragma once

#include "host/host.h"
#include "platform/entity_name.h"
#include "tools/moradmin/picture/geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::tool {

/// A number as drawings write it; none for anything else and for what is out of range.
[[nodiscard]] std::optional<double> readReal(std::string_view text);
/// The same for an integer; none for a fraction.
[[nodiscard]] std::optional<std::int64_t> readInteger(std::string_view text);

/// How the value of a group is meant.
enum class GroupKind { Text, Integer, Real };
[[nodiscard]] GroupKind groupKind(int code);

/// The groups of one record before its extended data, for reading its geometry.
class EntityRecord {
public:
    EntityRecord() = default;
    EntityRecord(const AcApDocument* document, mor::EntityName name) { read(document, name); }
    /// A part of a record, read as if it were one; the texts of its groups stay where they are.
    EntityRecord(std::string type, std::span<const host::GroupView> groups);

    /// Another record in place of the one before.
    void read(const AcApDocument* document, mor::EntityName name);
    /// Likewise one that was read; the texts of its groups stay where they are.
    void take(std::span<const host::GroupView> all);

    [[nodiscard]] const std::string& type() const { return m_type; }
    /// How much was read for it, extended data included; about.
    [[nodiscard]] std::size_t bytes() const { return m_bytes; }
    /// In the order of the file; those between `102 {` and `102 }` left out.
    [[nodiscard]] const std::vector<host::GroupView>& groups() const { return m_groups; }
    /// The groups of the object embedded behind them, whose codes mean other things.
    [[nodiscard]] const std::vector<host::GroupView>& embedded() const { return m_embedded; }
    /// The handle of the dictionary that extends the record; empty when there is none.
    [[nodiscard]] std::string_view extension() const { return m_extension; }
    /// The first group with that code.
    [[nodiscard]] const std::string_view* find(int code) const {
        if (code < 0 || static_cast<std::size_t>(code) >= kUsualCodes) return search(code);
        const First& first = m_first[static_cast<std::size_t>(code)];
        return first.record == m_record ? &m_groups[first.group].value : nullptr;
    }
    [[nodiscard]] std::string text(int code) const;  ///< empty when there is none
    [[nodiscard]] double real(int code, double missing = 0.0) const;
    [[nodiscard]] int integer(int code, int missing = 0) const;
    /// Groups code, code + 10 and code + 20; none when the first is missing.
    [[nodiscard]] std::optional<Point> point(int code) const;
    [[nodiscard]] Point point(int code, const Point& missing) const {
        return point(code).value_or(missing);
    }

    /// The axes of the plane in which the record's coordinates stand, from group 210.
    [[nodiscard]] host::PlaneAxes plane() const;

private:
    static constexpr std::size_t kUsualCodes = 512;
    /// Where the first group of a code stands, and in which of the records that were read.
    struct First {
        std::uint32_t record = 0;
        std::uint32_t group = 0;
    };
    void add(const host::GroupView& group);
    [[nodiscard]] const std::string_view* search(int code) const;

    host::GroupReader m_reader;  ///< keeps their texts
    std::uint32_t m_record = 1;
    std::array<First, kUsualCodes> m_first{};
    std::string m_type;
    std::size_t m_bytes = 0;
    std::vector<host::GroupView> m_groups;
    std::vector<host::GroupView> m_embedded;
    std::string_view m_extension;
};

/// Coordinates in a plane as coordinates of the space that holds it.
[[nodiscard]] inline Point fromPlane(const host::PlaneAxes& axes, const Point& p) {
    return p[0] * axes[0] + p[1] * axes[1] + p[2] * axes[2];
}

/// A vertex of a polyline; `bulge` is the tangent of a quarter of the angle of the arc to the next
/// one.
struct Vertex {
    Point at{};
    double bulge = 0.0;
    double startWidth = 0.0;  ///< of the line to the next one
    double endWidth = 0.0;
};
/// The vertices of a lightweight polyline, in its plane; of a leader.
[[nodiscard]] std::vector<Vertex> verticesOf(const EntityRecord& polyline);
/// The vertices behind an old-style polyline, in its plane, as high as it stands there, or, for one
/// in space, in coordinates of its owner; control points of fitted curves are left out. Adds to
/// `read` how much was read for them.
[[nodiscard]] std::vector<Vertex> verticesBehind(const AcApDocument* document, mor::EntityName name,
                                                 const EntityRecord& polyline, std::size_t& read);
/// Whether an old-style polyline has its coordinates in space, not in a plane.
[[nodiscard]] bool isSpatial(const EntityRecord& polyline);
/// Whether the last vertex of a polyline is joined to the first.
[[nodiscard]] bool isClosed(const EntityRecord& polyline);
/// Whether it is a mesh of faces.
[[nodiscard]] bool isMesh(const EntityRecord& polyline);

/// Whether the second point of a text places it, not the first: where it is aligned, neither
/// stretched between the two nor at the left of its base line.
[[nodiscard]] bool isAligned(const EntityRecord& text);

/// The points that define an entity, in the coordinates of its owner: ends of a line, centre of a
/// circle, vertices of a polyline, insertion points, corners.
[[nodiscard]] std::vector<Point> pointsOf(const AcApDocument* document, mor::EntityName name);

}  // namespace mor::tool
