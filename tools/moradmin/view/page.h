#pragma once

#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/draw.h"
#include "tools/moradmin/session.h"

#include <iosfwd>
#include <string_view>

namespace mor::tool {

/// The parts of the page, as they stand in this folder; parts that begin with @ are filled in.
struct PageText {
    std::string_view html;
    std::string_view style;
    std::string_view script;
};
[[nodiscard]] PageText pageText();

/// What the page tells besides the picture: facts, references, the store, findings, and attributes
/// and extended data of the records that are drawn.
[[nodiscard]] Json pageData(Session& session, Drawn& drawn);

/// By "HANDLE", or "REFERENCE|HANDLE" within references: what hangs on the records that are drawn.
[[nodiscard]] Json recordDetails(const Session& session, const Scene& scene);

/// One page that holds everything it shows.
void writePage(std::ostream& out, Session& session, Drawn& drawn);

}  // namespace mor::tool
