#pragma once

#include "host/host.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// Finds the file of a reference: the saved path as it is (either slash; relative to the referring
/// file's folder), after the user's mappings; the bare name in that folder; in the extra folders;
/// each as .dxf too where it says .dwg; and all that once more without regard to case. Every try is
/// noted.
[[nodiscard]] std::optional<std::filesystem::path> findReference(
    std::wstring_view saved, const std::filesystem::path& referring,
    std::vector<ReferenceTry>& tries);

}  // namespace mor::host
