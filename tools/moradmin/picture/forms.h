#pragma once

#include "tools/moradmin/picture/fonts.h"
#include "tools/moradmin/picture/scene.h"

#include <iosfwd>
#include <string>

/// Forms in which a scene is written.
namespace mor::tool {

/// The part of a scene that a picture shows, and how large.
struct Canvas {
    Extent area;
    double unitsPerMillimetre = 1.0;  ///< for weights of lines, and paper
    double pixels = 1000.0;           ///< of the longer side
    int background = 0xFFFFFF;        ///< -1 for none
    std::string title;
};

/// The picture with every element's handle, layer, type and reference.
void writeSvg(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas);

/// How wide a line is drawn, in units of the scene.
[[nodiscard]] double lineWidth(const Style& style, const Canvas& canvas);
/// Dashes as they are drawn: none where they are too short to be seen.
[[nodiscard]] const std::vector<float>* shownDashes(const Scene& scene, const Style& style,
                                                    const Canvas& canvas);

}  // namespace mor::tool
