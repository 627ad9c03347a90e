#include "host/dwg/unpack.h"

#include "host/dwg/pack.h"
#include "tests/fuzz/drawing_input.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// A byte that chooses the unpacker and the room it has, then packed bytes. And all of it as a page
/// of at least four bytes: what is packed must unpack as it was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mor;
    if (size == 0) return 0;
    const std::string bytes(fuzz::asText(data + 1, size - 1));
    std::string out(std::size_t{data[0] / 2U} * 61, '\0');
    if (data[0] % 2U == 0)
        static_cast<void>(host::unpack(bytes, out.data(), out.size()));
    else
        static_cast<void>(host::unpack2007(bytes, out.data(), out.size()));
    if (size < 4) return 0;
    const std::string page(fuzz::asText(data, size));
    const std::string packed = host::pack(page);
    std::string again(page.size(), '\0');
    fuzz::require(host::unpack(packed, again.data(), again.size()), "a page does not unpack");
    fuzz::require(again == page, "a page unpacks as another one");
    return 0;
}
