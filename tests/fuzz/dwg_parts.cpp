#include "host/dwg/classes.h"
#include "host/dwg/header_variables.h"
#include "host/dwg/object_map.h"
#include "host/faults.h"
#include "tests/fuzz/drawing_input.h"
#include "tests/fuzz/dwg_releases.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace mor;
using namespace mor::host;

constexpr std::size_t kObjectBytes = 4096;
constexpr std::string_view kHeaderMark(
    "\xCF\x7B\x1F\x23\xFD\xDE\x38\xA9\x5F\x7C\x68\xB8\x4E\x6D\x33\x5F", 16);
constexpr std::string_view kClassesMark(
    "\x8D\xA1\xC4\xB8\xC4\xA9\xF8\xC5\xC0\xDC\xF4\x5F\xE7\xCF\xB6\x8A", 16);

/// Data between a mark and its opposite, with their size; the sum is none.
std::string marked(std::string_view mark, std::string_view data, bool highSize) {
    std::string bytes(mark);
    for (std::size_t i = 0; i < (highSize ? 8 : 4); ++i)
        bytes += static_cast<char>(data.size() >> (8 * i) & 0xFFU);
    bytes.append(data).append(2, '\0');
    for (const char c : mark) bytes += static_cast<char>(~static_cast<unsigned char>(c));
    return bytes;
}

void readMap(const DwgSections& sections) {
    ObjectMap map;
    DamageNotes damage;
    static_cast<void>(map.read(sections, damage));
    std::uint64_t before = 0;
    for (const MapEntry& entry : map.entries()) {
        fuzz::require(entry.handle > before, "handles do not rise");
        fuzz::require(entry.place < sections.objects.size(), "an object lies outside");
        fuzz::require(map.find(entry.handle) == &entry, "an object is not found");
        before = entry.handle;
    }
}

}  // namespace

/// A byte for the release; the rest is read as header variables, as classes and as an object map.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    faults::trustSums(true);
    DwgSections sections;
    sections.start.release = fuzz::releaseOf(data[0]);
    sections.start.maintenance = data[0] / 8U;
    const std::string_view rest = fuzz::asText(data + 1, size - 1);
    sections.objects = host::LargeBytes(kObjectBytes);
    sections.map = host::LargeBytes(rest);
    sections.header = host::LargeBytes(marked(kHeaderMark, rest, sections.hasHighSizes()));
    sections.classes = host::LargeBytes(marked(kClassesMark, rest, sections.hasHighSizes()));
    readMap(sections);
    static_cast<void>(readHeaderVariables(sections));
    if (const auto classes = readClasses(sections))
        fuzz::require(classes->size() <= 8 * size, "there are more classes than bits");
    return 0;
}
