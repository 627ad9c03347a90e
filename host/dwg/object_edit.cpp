#include "host/dwg/object_edit.h"

#include "host/dwg/checksums.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

constexpr std::uint64_t kSizeBits = 32;

/// Bits `from` to `to` of the object with the splices among them.
BitWriter rebuilt(const ObjectFrame& frame, std::uint64_t from, std::uint64_t to,
                  const std::vector<BitSplice>& splices, bool handles) {
    BitWriter bits;
    std::uint64_t at = from;
    for (const BitSplice& splice : splices) {
        if (splice.handle != handles) continue;
        bits.copy(frame.bytes, at, splice.begin);
        bits.append(splice.bits);
        at = splice.end;
    }
    bits.copy(frame.bytes, at, to);
    return bits;
}

}  // namespace

std::string sealed(ObjectBits object, Release release) {
    const std::uint64_t dataBits = object.data.size();
    BitWriter all;
    if (release < Release::R2010) {
        all.copy(object.data.bytes(), 0, object.sizeAt);
        all.longWord(dataBits);
        all.copy(object.data.bytes(), object.sizeAt + kSizeBits, dataBits);
    } else {
        all = std::move(object.data);
    }
    all.append(object.handles);
    std::string bytes;
    appendModularShort(bytes, all.bytes().size());
    if (release >= Release::R2010)
        appendUnsignedModularChar(bytes, all.bytes().size() * std::uint64_t{8} - dataBits);
    bytes += all.bytes();
    appendNumber(bytes, crc16(kObjectSeed, bytes), 2);
    return bytes;
}

std::string spliced(const ObjectFrame& frame, Release release, std::vector<BitSplice> splices,
                    std::uint64_t handlesEnd) {
    std::ranges::stable_sort(splices, {}, &BitSplice::begin);
    ObjectBits object;
    if (release < Release::R2010) {
        BitReader type(frame.bytes, 0, frame.end());
        static_cast<void>(type.bitShort());
        object.sizeAt = type.position();
    }
    object.data = rebuilt(frame, 0, frame.handles, splices, false);
    object.handles = rebuilt(frame, frame.handles, handlesEnd, splices, true);
    return sealed(std::move(object), release);
}

}  // namespace mor::host
