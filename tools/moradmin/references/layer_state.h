#pragma once

#include "platform/documents.h"
#include "platform/entity_name.h"

#include <optional>
#include <string>

namespace mor::tool {

/// What the record of a layer says.
struct LayerState {
    int color = 7;  ///< of the palette
    std::string linetype;
    bool off = false;
    bool frozen = false;
    bool locked = false;
    std::optional<int> trueColour;  ///< 0xRRGGBB
};
[[nodiscard]] LayerState layerState(const AcApDocument* document, mor::EntityName layer);

}  // namespace mor::tool
