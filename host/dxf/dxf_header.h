#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/dxf_index.h"
#include "host/result.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mor::host {

/// Fills in what the header variables say. `file` stands in the errors.
/// Refused: releases that are not read.
std::optional<Error> readHeader(const DxfIndex& index, Skeleton& skeleton, const std::string& file);

/// $ACADVER of a release: "AC1032".
[[nodiscard]] std::string versionOf(Release release);

/// The HEADER record with another seed; of a release that has it, with $HANDLING not 0. What is
/// missing is added behind. `header` is empty for a file without that section.
[[nodiscard]] std::string withSeed(const TagList& header, const DxfForm& form, Release release,
                                   std::uint64_t seed);

}  // namespace mor::host
