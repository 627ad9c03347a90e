#pragma once

#include "host/drawing/drawing.h"
#include "host/result.h"

#include <memory>
#include <string>
#include <string_view>

namespace mor::host {

/// Opens a drawing in whatever form its first bytes show; its name does not count. `file` stands in
/// the errors.
/// Refused: what is no drawing, forms and releases that are not read, drawings that break off.
Result<std::unique_ptr<Drawing>> openDrawing(const std::shared_ptr<Source>& source,
                                             const std::string& file);

/// The smallest valid drawing of that release, as DXF text.
[[nodiscard]] std::unique_ptr<Drawing> makeDrawing(Release release, std::string_view lineEnd);

}  // namespace mor::host
