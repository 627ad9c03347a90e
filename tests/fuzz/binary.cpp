#include "tests/fuzz/drawing_input.h"

#include <string>

/// A binary drawing; the first byte says whether group codes take one byte or two.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::string bytes("AutoCAD Binary DXF\r\n\x1A\0\0", 23);
    if (data[0] % 2 != 0) bytes += '\0';
    bytes += std::string("SECTION\0", 8);
    bytes += mor::fuzz::asText(data + 1, size - 1);
    mor::fuzz::roundTrip(bytes);
    return 0;
}
