#pragma once

#include "platform/entity_name.h"
#include "platform/geometry.h"
#include "tools/moradmin/session.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace mor::tool {

/// An entity that lies in a block or a reference, as often as that is inserted.
struct DeepEntity {
    mor::EntityName name;
    CMORMathTransMatrix placement;  ///< carries its points into the drawing
    std::string way;                ///< the blocks on the way, SITE/TREE
};

/// Visits what the inserts among the session's entities bring with them, block by block; a block
/// within itself is passed over. Ends after a million entities; false then.
bool forEachDeepEntity(const Session& session, const std::vector<mor::EntityName>& inserts,
                       const std::function<void(const DeepEntity&)>& visit);

/// How many it would visit, whatever their number; places and lists none of them.
std::size_t countDeepEntities(const Session& session, const std::vector<mor::EntityName>& inserts);

}  // namespace mor::tool
