#pragma once

#include "tests/support/dxf_drawing.h"

#include <string>

namespace mor::test {

[[nodiscard]] inline std::string directoryTags(const std::string& handle, const std::string& path,
                                               const std::string& entries,
                                               const std::string& space = "") {
    return "0 INSERT|5 " + handle + "|" + space +
           "8 MOR_CONTROL_LAYER|2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|" +
           attributeTags("1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 " + path + "|" + entries);
}

/// A drawing with a store as its file has it: "/ [a/ [f=5 b/ [g="x"]]]", where /a lies in paper
/// space.
[[nodiscard]] inline DxfDrawing storedDrawing(const std::string& space = "67 1|") {
    const std::string anchor =
        "0 ATTDEF|5 10|8 0|10 0.0|20 0.0|30 0.0|40 1.0|1 |3 mor|2 mor|70 3|" +
        attributeTags("1000 \\U+005EDWG_FILESYSTEM_ROOT|1000 12|");
    return {.layers = {"0", "MOR_CONTROL_LAYER"},
            .blocks = blockDefinition("MOR_DWGFILES", anchor),
            .entities = directoryTags("12", "/", "1000 \\U+005Ea|1000 13|") +
                        directoryTags("13", "/a", "1000 f|1071 5|1000 \\U+005Eb|1000 14|", space) +
                        directoryTags("14", "/a/b", "1000 g|1000 x|")};
}

}  // namespace mor::test
