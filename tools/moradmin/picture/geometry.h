#pragma once

#include "platform/geometry.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace mor::tool {

using Point = std::array<double, 3>;

[[nodiscard]] inline Point operator+(const Point& a, const Point& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
[[nodiscard]] inline Point operator-(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
[[nodiscard]] inline Point operator*(double factor, const Point& p) {
    return {factor * p[0], factor * p[1], factor * p[2]};
}

[[nodiscard]] inline Point cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Whether all coordinates are numbers, none larger than that.
[[nodiscard]] inline bool isWithin(const Point& p, double most) {
    return std::fabs(p[0]) <= most && std::fabs(p[1]) <= most && std::fabs(p[2]) <= most;
}
[[nodiscard]] inline bool isFinite(const Point& p) {
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// The transformation that applies `second` first and `first` to its result.
[[nodiscard]] inline CMORMathTransMatrix product(const CMORMathTransMatrix& first,
                                                 const CMORMathTransMatrix& second) {
    CMORMathTransMatrix result;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = column == 3 ? first.rows[row][3] : 0.0;
            for (std::size_t i = 0; i < 3; ++i) sum += first.rows[row][i] * second.rows[i][column];
            result.rows[row][column] = sum;
        }
    return result;
}

[[nodiscard]] inline Point transformed(const CMORMathTransMatrix& matrix, Point point) {
    matrix.Transform(point.data());
    return point;
}

/// A direction: turned and scaled, not moved.
[[nodiscard]] inline Point turned(const CMORMathTransMatrix& matrix, const Point& direction) {
    Point result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t i = 0; i < 3; ++i) result[row] += matrix.rows[row][i] * direction[i];
    return result;
}

}  // namespace mor::tool
