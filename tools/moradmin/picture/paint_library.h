#pragma once

#include "tools/moradmin/picture/forms.h"

#include <memory>

namespace mor::tool {

/// What is made with the libraries that draw and that know the fonts of the machine. It lies in a
/// module of its own, which shares no code with the program.
struct PaintLibrary {
    std::unique_ptr<Fonts> (*fonts)() = nullptr;
    /// Throw Failure when there is no memory for it.
    void (*png)(std::ostream& out, const Scene& scene, Fonts& fonts,
                const Canvas& canvas) = nullptr;
    /// One page, as large as the area is on paper.
    void (*pdf)(std::ostream& out, const Scene& scene, Fonts& fonts,
                const Canvas& canvas) = nullptr;
};
/// Loaded when it is first asked for. Throws Failure.
[[nodiscard]] const PaintLibrary& paintLibrary();

/// Within the module.
[[nodiscard]] std::unique_ptr<Fonts> machineFonts();

}  // namespace mor::tool
