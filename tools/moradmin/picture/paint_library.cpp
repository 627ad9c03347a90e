#include "tools/moradmin/picture/paint_library.h"

#include "tools/moradmin/running/late.h"

namespace mor::tool {

const PaintLibrary& paintLibrary() {
    using Function = const PaintLibrary* (*)();
    static const PaintLibrary& library =
        *reinterpret_cast<Function>(lateFunction("moradmin_paint.so", "moradminPaintLibrary"))();
    return library;
}

}  // namespace mor::tool
