#pragma once

#include "platform/entity.h"
#include "platform/entity_name.h"

namespace mor::tool {

/// Connects `entity` to the record of that name; it stays unconnected when this fails.
[[nodiscard]] inline bool connect(CMOREntity& entity, mor::EntityName name) {
    ads_name words{};
    name.copyTo(words);
    return entity.Connect(words);
}

}  // namespace mor::tool
