#pragma once

#include <array>

/// Where things of a drawing lie.
namespace mor::host {

/// The axes x, y and z of the plane in which an entity with that normal has its coordinates, of
/// length 1 (arbitrary axis rule). The normal need not be of length 1; (0, 0, 0) counts as
/// (0, 0, 1).
using PlaneAxes = std::array<std::array<double, 3>, 3>;
[[nodiscard]] PlaneAxes planeAxes(const std::array<double, 3>& normal);
/// Sine and cosine of an angle in degrees; exact at the multiples of 90.
[[nodiscard]] std::array<double, 2> sineAndCosine(double degrees);

}  // namespace mor::host
