#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/sections.h"

#include <array>

namespace mor::host {

namespace {

constexpr std::size_t kCountAt = 0x15;
constexpr std::size_t kLocatorBytes = 9;
constexpr std::uint32_t kMostLocators = 16;
constexpr std::string_view kEndMark(
    "\x95\xA0\x4E\x28\x99\x82\x1A\xE5\x5E\x41\xE0\x5F\x9D\x3A\x4D\x00", 16);

struct Locator {
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

/// What the sum of the first bytes is combined with, by the number of locators; 0 where unknown.
std::uint16_t maskFor(std::uint32_t locators) {
    static constexpr std::array<std::uint16_t, 4> masks = {0xA598, 0x8101, 0x3CC4, 0x8461};
    return locators >= 3 && locators <= 6 ? masks[locators - 3] : 0;
}

}  // namespace

std::string readFlat(const Source& source, DwgSections& sections) {
    std::string& file = sections.objects;
    file = source.read(0, source.size());
    const std::string_view bytes = file;
    ByteReader reader(bytes.substr(kCountAt));
    const std::uint32_t count = reader.longWord();
    if (count < 3 || count > kMostLocators)
        return "it has " + std::to_string(count) + " section locators";
    std::array<Locator, kMostLocators> locators;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint8_t number = reader.byte();
        const Locator found{reader.longWord(), reader.longWord()};
        if (found.address > bytes.size() || found.size > bytes.size() - found.address)
            return "section " + std::to_string(number) + " lies outside of the file";
        if (number < kMostLocators) locators[number] = found;
    }
    const std::size_t summed = kCountAt + 4 + count * kLocatorBytes;
    const std::uint16_t sum = crc16(0, bytes.substr(0, summed)) ^ maskFor(count);
    if (!sumsAgree(sum, reader.word()) && maskFor(count) != 0)
        return "the checksum of its first bytes is wrong";
    if (reader.bytes(kEndMark.size()) != kEndMark)
        return "its first bytes do not end where they should";
    const auto section = [&](std::size_t number) {
        return std::string(bytes.substr(locators[number].address, locators[number].size));
    };
    sections.header = section(0);
    sections.classes = section(1);
    sections.map = section(2);
    const std::string measurement = section(4);
    sections.metric = measurement.size() >= 4 && measurement[2] == 1;
    return {};
}

}  // namespace mor::host
