#include "tools/moradmin/references/layer_state.h"

#include "space/record_flags.h"
#include "tools/moradmin/references/entity_record.h"

#include <cstdlib>

namespace mor::tool {

LayerState layerState(const AcApDocument* document, mor::EntityName layer) {
    const EntityRecord record(document, layer);
    const int color = record.integer(62, 7);  // negative for a layer that is off
    const int flags = record.integer(kGroupFlags);
    LayerState state;
    state.color = std::abs(color);
    state.linetype = record.text(6);
    state.off = color < 0;
    state.frozen = (flags & kLayerFrozen) != 0;
    state.locked = (flags & kLayerLocked) != 0;
    if (record.find(420) != nullptr) state.trueColour = record.integer(420);
    return state;
}

}  // namespace mor::tool
