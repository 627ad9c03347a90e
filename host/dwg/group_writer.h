#pragma once

#include "host/drawing/group.h"
#include "host/dwg/fields.h"
#include "host/handles.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace mor::host {

/// Adds groups to a list as DXF would have them.
class GroupWriter {
public:
    explicit GroupWriter(GroupList& list) : m_list(list) {}

    void text(int code, std::string value) {
        m_list.add(Group(code, m_list.keep(std::move(value))));
    }
    /// A text that lives as long as the program.
    void literal(int code, const char* value) { m_list.add(Group(code, std::string_view(value))); }
    void marker(const char* value) { literal(100, value); }
    void integer(int code, std::int64_t value) { m_list.add(Group(code, value)); }
    void flag(int code, bool value) { integer(code, value ? 1 : 0); }
    void real(int code, double value) { m_list.add(Group(code, value)); }
    void realUnless(int code, double value, double usual) {
        if (value != usual) real(code, value);
    }
    void integerUnless(int code, std::int64_t value, std::int64_t usual) {
        if (value != usual) integer(code, value);
    }
    void angle(int code, double radians) { real(code, degrees(radians)); }
    void angleUnless(int code, double radians, double usual) {
        if (radians != usual) angle(code, radians);
    }
    void point(int code, const Point2& point) {
        real(code, point[0]);
        real(code + 10, point[1]);
    }
    void point(int code, const Point3& point) {
        real(code, point[0]);
        real(code + 10, point[1]);
        real(code + 20, point[2]);
    }
    void point(int code, const Point2& point, double z) {
        this->point(code, Point3{point[0], point[1], z});
    }
    void normal(const Point3& normal) {
        if (normal != Point3{0.0, 0.0, 1.0}) point(210, normal);
    }
    void handle(int code, std::uint64_t handle) {
        if (handle == 0)
            literal(code, "0");
        else
            text(code, handleText(handle));
    }
    [[nodiscard]] static double degrees(double radians) {
        constexpr double kDegrees = 57.29577951308232;
        return radians * kDegrees;
    }

private:
    GroupList& m_list;
};

}  // namespace mor::host
