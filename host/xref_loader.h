#pragma once

#include "host/host.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace mor::host {

/// Absolute, links and dots resolved as far as the path leads to something.
[[nodiscard]] std::filesystem::path realPath(const std::filesystem::path& path);

/// Visits the files that a reference may mean, until `take` answers that it has taken one: the
/// saved path as it is (either slash; relative to the referring file's folder), after the user's
/// mappings; the bare name in that folder; in the extra folders; each as .dxf too where it says
/// .dwg; and all that once more without regard to case. Places where there is no file are noted,
/// and those outside the folder to which references are confined.
void searchReference(std::wstring_view saved, const std::filesystem::path& referring,
                     std::vector<ReferenceTry>& tries,
                     const std::function<bool(const std::filesystem::path&)>& take);

}  // namespace mor::host
