#include "tests/fuzz/drawing_input.h"

/// Any bytes as a drawing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    mor::fuzz::roundTrip(mor::fuzz::asText(data, size));
    return 0;
}
