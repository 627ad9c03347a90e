#pragma once

#include "tools/moradmin/output.h"
#include "tools/moradmin/session.h"

#include <ostream>

namespace mor::tool {

/// Puts what a drawing holds besides its store into an object: units, extents, entities by type,
/// layouts, references, applications with extended data, dictionaries. Looks at every record.
void addDrawingFacts(Json& object, AcApDocument* document);
/// The same keys, all null.
void addNoFacts(Json& object);
/// The facts of such an object as lines for people; what is not there has none.
void printFacts(std::ostream& out, const Json& facts);

}  // namespace mor::tool
