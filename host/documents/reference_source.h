#pragma once

#include "host/drawing/source.h"

#include <cstddef>
#include <filesystem>
#include <memory>

namespace mor::host {

/// Of so many references the files are held open; others are opened again when they are read.
inline constexpr std::size_t kMostOpenReferences = 64;

/// Opens the file of a reference. A drawing may have thousands of them, more than a process may
/// hold open: those read last stay open, so that a rename over them does no harm. Reading another
/// one fails when its file is not there any more as it was.
Result<std::shared_ptr<Source>> openReferenceSource(const std::filesystem::path& path);

}  // namespace mor::host
