#include "host/dwg/dwg_file.h"
#include "host/dwg/record_groups.h"
#include "host/faults.h"
#include "tests/fuzz/drawing_input.h"
#include "tests/fuzz/dwg_releases.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace mor;
using namespace mor::host;

/// Every class whose records are decoded, and one that is not.
std::vector<DwgClass> classes() {
    constexpr std::pair<const char*, bool> known[] = {{"ACDBDICTIONARYWDFLT", false},
                                                      {"DICTIONARYVAR", false},
                                                      {"PLOTSETTINGS", false},
                                                      {"SORTENTSTABLE", false},
                                                      {"SCALE", false},
                                                      {"DBCOLOR", false},
                                                      {"IMAGEDEF", false},
                                                      {"IMAGEDEF_REACTOR", false},
                                                      {"IMAGE", true},
                                                      {"WIPEOUT", true},
                                                      {"ARC_DIMENSION", true},
                                                      {"OTHER", true}};
    std::vector<DwgClass> result;
    std::uint16_t number = kDwgFirstClass;
    for (const auto& [name, entity] : known) {
        DwgClass added;
        added.number = number++;
        added.dxfName = name;
        added.entity = entity;
        result.push_back(added);
    }
    return result;
}

const DwgFile& fileOf(Release release) {
    static std::map<Release, std::unique_ptr<DwgFile>> files;
    auto& file = files[release];
    if (file == nullptr) file = DwgFile::withoutObjects(release, classes());
    return *file;
}

/// How many bytes texts and numbers of the groups take.
std::size_t sizeOf(const GroupList& groups) {
    std::size_t bytes = 0;
    for (const Group& group : groups) bytes += 16 + (group.isText() ? group.text().size() : 0);
    return bytes;
}

}  // namespace

/// A byte for the release, then an object as it lies in a file, whose sum counts for nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    faults::trustSums(true);
    const DwgFile& file = fileOf(fuzz::releaseOf(data[0]));
    const std::string bytes(fuzz::asText(data + 1, size - 1));
    const ObjectFrame frame = frameAt(bytes, 0, file.release(), file.entityClasses(), true);
    if (frame.wrong != nullptr) return 0;
    fuzz::require(frame.body <= frame.handles && frame.handles <= frame.end(),
                  "parts of the object lie outside of it");
    const DecodedRecord record = decodeRecord(file, frame);
    fuzz::require(record.handlesEnd <= frame.end(), "handles lie outside of the object");
    fuzz::require(sizeOf(record.groups) <= 4096 + 4096 * size, "groups grow without end");
    static_cast<void>(hasExtendedData(file, frame, "MOR"));
    return 0;
}
