#include "tools/moradmin/picture/forms.h"

#include <algorithm>

namespace mor::tool {

namespace {

///< of a pixel
constexpr double kShortestDash = 1.0 / 1500.0;  ///< a pattern, of the longer side

}  // namespace

double lineWidth(const Style& style, const Canvas& canvas) {
    // Lines of no weight are as thin as they can be drawn.
    constexpr float kThinnest = 0.09F;
    const double thin = static_cast<double>(std::max(style.weight, kThinnest));
    return std::max(static_cast<double>(style.width), thin * canvas.unitsPerMillimetre);
}

const std::vector<float>* shownDashes(const Scene& scene, const Style& style,
                                      const Canvas& canvas) {
    if (style.dash == 0) return nullptr;
    const std::vector<float>& dashes = scene.dashOf(style);
    double whole = 0.0;
    for (const float length : dashes) whole += static_cast<double>(length);
    return whole < kShortestDash * longerSide(canvas.area) ? nullptr : &dashes;
}

}  // namespace mor::tool
