#pragma once

#include "host/host.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

/// What fuzz targets share: drawings that come as bytes.
namespace mor::fuzz {

/// Aborts with `text` and `more` when something does not hold.
void require(bool holds, std::string_view text, std::string_view more = {});

/// A file of this process, in memory where the machine has such a folder.
[[nodiscard]] std::filesystem::path fileNamed(std::string_view name);
[[nodiscard]] std::filesystem::path writeFile(std::string_view name, std::string_view bytes);
[[nodiscard]] inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Every live record with its groups and attributes, a line each, in the order of the file;
/// `Content` has those alone that a save neither adds nor renumbers, in no order of the file.
enum class Records { All, Content };
[[nodiscard]] std::string describe(const AcApDocument* document, Records which);

/// Opens the bytes as a drawing and reads all of it, in both ways in which texts are read. One that
/// is whole must be saved as it came, what is read of a damaged one saved as a whole one.
void roundTrip(std::string_view bytes);

}  // namespace mor::fuzz
