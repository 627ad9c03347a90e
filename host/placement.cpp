#include "host/placement.h"

#include <cmath>

namespace mor::host {

namespace {

using Vector = std::array<double, 3>;

/// Below this in x and y, the y axis of the world instead of its z axis gives the first direction.
constexpr double kNearlyVertical = 1.0 / 64.0;

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector normalised(const Vector& v) {
    const double length = std::hypot(v[0], v[1], v[2]);
    if (length == 0.0) return {0.0, 0.0, 1.0};
    return {v[0] / length, v[1] / length, v[2] / length};
}

}  // namespace

std::array<double, 2> sineAndCosine(double degrees) {
    const double turn = std::fmod(degrees, 360.0);
    if (turn == 0.0) return {0.0, 1.0};
    if (turn == 90.0 || turn == -270.0) return {1.0, 0.0};
    if (turn == 180.0 || turn == -180.0) return {0.0, -1.0};
    if (turn == 270.0 || turn == -90.0) return {-1.0, 0.0};
    const double radians = turn * (std::acos(-1.0) / 180.0);
    return {std::sin(radians), std::cos(radians)};
}

PlaneAxes planeAxes(const std::array<double, 3>& normal) {
    const Vector unit = normalised(normal);
    const bool vertical =
        std::fabs(unit[0]) < kNearlyVertical && std::fabs(unit[1]) < kNearlyVertical;
    const Vector axisX =
        normalised(cross(vertical ? Vector{0.0, 1.0, 0.0} : Vector{0.0, 0.0, 1.0}, unit));
    return {axisX, cross(unit, axisX), unit};
}

}  // namespace mor::host
