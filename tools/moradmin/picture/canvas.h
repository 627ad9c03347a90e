#pragma once

#include "tools/moradmin/options.h"
#include "tools/moradmin/picture/forms.h"
#include "tools/moradmin/picture/painter.h"

#include <optional>
#include <string>

namespace mor::tool {

enum class Form { Svg, Png, Pdf };
/// By --form, else by the name of the output; SVG where neither says. Throws Failure.
[[nodiscard]] Form formOf(const Options& options);

/// What the options say of the picture. Throws Failure for what makes no sense.
struct PictureWish {
    explicit PictureWish(const Options& options);

    Form form = Form::Svg;
    double pixels = 1000.0;
    int background = 0xFFFFFF;
    std::optional<double> scale;   ///< millimetres of paper for one of the drawing
    std::optional<Extent> window;  ///< in coordinates of the drawing
};
/// The part of the scene that is shown. Throws Failure when the page would be too large.
[[nodiscard]] Canvas canvasOf(const PictureWish& wish, const Scene& scene, const Layout& layout,
                              const host::DrawingSettings& settings);

/// The layout that is asked for, else the first one that holds anything, model space first. Throws
/// Failure.
[[nodiscard]] Layout chosenLayout(const std::vector<Layout>& layouts, const std::string& name);

}  // namespace mor::tool
