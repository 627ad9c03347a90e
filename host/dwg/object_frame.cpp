#include "host/dwg/object_frame.h"

#include "host/dwg/checksums.h"

namespace mor::host {

namespace {

constexpr std::uint64_t kSumBytes = 2;

ObjectFrame broken(ObjectFrame frame, const char* why) {
    frame.wrong = why;
    return frame;
}

}  // namespace

bool isEntityType(std::uint16_t type) {
    return (type >= 1 && type <= 0x29) || (type >= 0x2B && type <= 0x2F) || type == 0x4A ||
           type == 0x4D || type == 0x4E || type == kDwgProxyEntity;
}

ObjectFrame frameAt(std::string_view objects, std::uint64_t place, Release release,
                    const std::vector<bool>& entityClasses, bool testSum) {
    ObjectFrame frame;
    if (place >= objects.size()) return broken(frame, "it lies outside of the objects");
    ByteReader reader(objects.substr(static_cast<std::size_t>(place)));
    const std::uint64_t size = reader.modularShort();
    const std::uint64_t handleBits = release >= Release::R2010 ? reader.unsignedModularChar() : 0;
    const std::size_t head = reader.position();
    if (reader.failed() || size < 4 || size + kSumBytes > reader.remaining() ||
        handleBits > size * 8)
        return broken(frame, "its size is wrong");
    frame.whole = objects.substr(static_cast<std::size_t>(place), head + size + kSumBytes);
    frame.bytes = frame.whole.substr(head, static_cast<std::size_t>(size));
    const std::string_view summed = frame.whole.substr(0, head + static_cast<std::size_t>(size));
    if (testSum) {
        const std::uint16_t sum = ByteReader(frame.whole.substr(summed.size())).word();
        if (!sumsAgree(crc16(kObjectSeed, summed), sum)) frame.wrong = "its checksum is wrong";
    }
    BitReader bits(frame.bytes, 0, frame.end());
    frame.type =
        release >= Release::R2010 ? bits.objectType() : static_cast<std::uint16_t>(bits.bitShort());
    const bool sizeFirst = release >= Release::R2000 && release <= Release::R2007;
    std::uint64_t handles = sizeFirst ? bits.longWord() : frame.end() - handleBits;
    frame.handle = bits.handle().value;
    frame.entity =
        frame.type < kDwgFirstClass
            ? isEntityType(frame.type)
            : static_cast<std::size_t>(frame.type - kDwgFirstClass) < entityClasses.size() &&
                  entityClasses[frame.type - kDwgFirstClass];
    if (bits.failed()) return broken(frame, "it breaks off");
    if (frame.wrong != nullptr) return frame;
    frame.extendedBegin = bits.position();
    while (const auto length = static_cast<std::uint16_t>(bits.bitShort())) {
        static_cast<void>(bits.handle());
        bits.skip(std::uint64_t{length} * 8);
    }
    frame.extendedEnd = bits.position();
    if (frame.entity && bits.bit()) {
        frame.graphicsBytes = release >= Release::R2010 ? bits.bitLongLong() : bits.longWord();
        frame.graphicsBegin = bits.position();
        if (!bits.holds(frame.graphicsBytes, 8)) return broken(frame, "its graphics break off");
        bits.skip(frame.graphicsBytes * 8);
    }
    if (release <= Release::R14) handles = bits.longWord();
    frame.body = bits.position();
    frame.handles = handles;
    if (bits.failed()) return broken(frame, "it breaks off");
    if (handles > frame.end() || handles < frame.body)
        return broken(frame, "the place of its handles is wrong");
    return frame;
}

}  // namespace mor::host
