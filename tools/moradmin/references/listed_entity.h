#pragma once

#include "platform/entity.h"
#include "platform/entity_name.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// What every listing of entities says of one.
struct ListedEntity {
    std::string handle;
    std::string type;
    std::string layer;  ///< as the drawing knows it
    std::string space;  ///< model space, a reference, a layout by its name, or a block definition
};

/// Connects `entity`, which stays unconnected for what stands between the records of a table.
[[nodiscard]] ListedEntity describe(const Session& session, mor::EntityName name,
                                    CMOREntity& entity);
[[nodiscard]] Json entityJson(const Options& options, const ListedEntity& entity);

}  // namespace mor::tool
