#include "host/dwg/flat_sections.h"

#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/sections.h"

namespace mor::host {

namespace {

constexpr std::size_t kLocatorBytes = 9;
constexpr std::size_t kFewestLocators = 3;
constexpr std::string_view kEndMark(
    "\x95\xA0\x4E\x28\x99\x82\x1A\xE5\x5E\x41\xE0\x5F\x9D\x3A\x4D\x00", 16);

}  // namespace

std::uint16_t locatorMask(std::size_t count) {
    static constexpr std::array<std::uint16_t, 4> masks = {0xA598, 0x8101, 0x3CC4, 0x8461};
    return count >= kFewestLocators && count <= 6 ? masks[count - kFewestLocators] : 0;
}

std::string readLocators(std::string_view file, FlatLocators& locators) {
    if (file.size() < kLocatorsAt) return "it breaks off in its first bytes";
    ByteReader reader(file.substr(kLocatorsAt - 4));
    locators.count = reader.longWord();
    if (locators.count < kFewestLocators || locators.count > kMostLocators)
        return "it has " + std::to_string(locators.count) + " section locators";
    for (std::size_t i = 0; i < locators.count; ++i) {
        const std::uint8_t number = reader.byte();
        const FlatLocator found{reader.longWord(), reader.longWord()};
        if (found.address > file.size() || found.size > file.size() - found.address)
            return "section " + std::to_string(number) + " lies outside of the file";
        if (number >= kMostLocators) return "it has a section locator that means nothing";
        locators.numbers[i] = number;
        locators.at[number] = found;
    }
    const std::size_t summed = kLocatorsAt + locators.count * kLocatorBytes;
    const unsigned mask = locatorMask(locators.count);
    const std::uint16_t sum = reader.word();
    if (mask != 0 && !sumsAgree(crc16(0, file.substr(0, summed)) ^ mask, sum))
        return "the checksum of its first bytes is wrong";
    if (reader.bytes(kEndMark.size()) != kEndMark)
        return "its first bytes do not end where they should";
    return {};
}

std::optional<SecondHeader> readSecondHeader(std::string_view bytes) {
    constexpr std::size_t kSizeBytes = 4;
    const std::size_t mark = kSecondMark.size();
    if (!bytes.starts_with(kSecondMark)) return std::nullopt;
    const std::size_t size = ByteReader(bytes.substr(mark)).longWord();
    if (size < kSizeBytes || bytes.size() < 2 * mark || size > bytes.size() - 2 * mark)
        return std::nullopt;
    SecondHeader header;
    header.body = bytes.substr(mark, size);
    BitReader in(header.body, kSizeBytes * 8, size * std::uint64_t{8});
    static_cast<void>(in.bitLong());
    header.fixedBegin = in.position();
    in.skip(13 * std::uint64_t{8});  // version, bytes of the first header
    static_cast<void>(in.bitShort());
    in.skip(16);
    const std::int32_t locators = in.bitLong();
    for (std::int32_t i = 0; i < locators && !in.failed(); ++i) {
        SecondHeader::Field field;
        field.begin = in.position();
        field.number = in.byte();
        const std::int32_t address = in.bitLong();
        field.none = in.bitLong() == 0 && address == 0;
        field.end = in.position();
        header.locators.push_back(field);
    }
    header.handlesBegin = in.position();
    const std::int16_t handles = in.bitShort();
    for (std::int16_t i = 0; i < handles && !in.failed(); ++i) {
        SecondHeader::Field field;
        field.begin = in.position();
        const std::uint8_t length = in.byte();
        field.number = in.byte();
        in.skip(std::uint64_t{length} * 8);
        field.end = in.position();
        header.handles.push_back(field);
    }
    header.sumAt = static_cast<std::size_t>((in.position() + 7) / 8);
    if (in.failed() || header.sumAt + 2 > size) return std::nullopt;
    const std::uint16_t sum = ByteReader(header.body.substr(header.sumAt)).word();
    if (!sumsAgree(crc16(kObjectSeed, header.body.substr(0, header.sumAt)), sum))
        return std::nullopt;
    return header;
}

std::string readFlat(const Source& source, DwgSections& sections) {
    LargeBytes all(static_cast<std::size_t>(source.size()));
    all.shorten(source.read(0, all.data(), all.size()));
    const std::string_view file = all;
    FlatLocators locators;
    if (std::string wrong = readLocators(file, locators); !wrong.empty()) return wrong;
    const auto section = [&](std::size_t number) {
        return LargeBytes(file.substr(static_cast<std::size_t>(locators.at[number].address),
                                      static_cast<std::size_t>(locators.at[number].size)));
    };
    sections.header = section(0);
    sections.classes = section(1);
    sections.map = section(2);
    const LargeBytes data = section(4);
    const std::string_view measurement = data;
    sections.metric = measurement.size() >= 4 && measurement[2] == 1;
    const std::size_t second = file.find(
        kSecondMark, static_cast<std::size_t>(locators.at[2].address + locators.at[2].size));
    if (second != std::string::npos && !readSecondHeader(file.substr(second)))
        sections.damage.note("the checksum of its second header is wrong", second);
    sections.objects = std::move(all);
    return {};
}

}  // namespace mor::host
