#pragma once

#include "tools/moradmin/options.h"
#include "tools/moradmin/picture/canvas.h"
#include "tools/moradmin/picture/painter.h"
#include "tools/moradmin/session.h"

#include <memory>
#include <vector>

namespace mor::tool {

/// A drawing as a scene, by the options of `draw`. Throws Failure.
struct Drawn {
    Drawn(Session& session, const Options& options);

    PictureWish wish;
    std::vector<Layout> layouts;  ///< empty when a reference is looked through
    Layout layout;                ///< the one that is drawn
    Palette palette;
    Painter painter;
    Canvas canvas;
};
/// Says on stderr what is not drawn and why.
void tellLeftOut(const Session& session, const Options& options, Drawn& drawn);

}  // namespace mor::tool
