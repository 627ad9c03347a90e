#include "host/dwg/sections.h"

#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"

#include <algorithm>

namespace mor::host {

namespace {

constexpr std::size_t kStartBytes = 0x100;
constexpr std::uint64_t kLargestFile = std::uint64_t{2} << 30U;
constexpr std::uint32_t kEncrypted = 1 | 2;
constexpr std::uint32_t kSigned = 0x10;

struct Version {
    std::string_view text;
    Release release;
};
constexpr Version kVersions[] = {{"AC1012", Release::R13},   {"AC1014", Release::R14},
                                 {"AC1015", Release::R2000}, {"AC1018", Release::R2004},
                                 {"AC1021", Release::R2007}, {"AC1024", Release::R2010},
                                 {"AC1027", Release::R2013}, {"AC1032", Release::R2018}};

}  // namespace

void DamageNotes::note(const std::string& text, std::uint64_t at) {
    if (count++ != 0) return;
    first = text;
    offset = at;
}

bool DwgSections::hasHighSizes() const {
    constexpr unsigned kLastWithout = 3;
    return start.release == Release::R2018 ||
           (start.release >= Release::R2010 && start.maintenance > kLastWithout);
}

bool looksLikeDwg(std::string_view start) {
    if (start.size() < 6) return false;
    const std::string_view version = start.substr(0, 6);
    const bool numbered = std::ranges::all_of(
        version.substr(2), [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    return numbered && (version.starts_with("AC") || version.starts_with("MC"));
}

std::optional<std::string_view> markedData(std::string_view section, std::string_view mark,
                                           bool hasHighSize) {
    if (!section.starts_with(mark)) return std::nullopt;
    ByteReader reader(section.substr(mark.size()));
    const std::size_t size = reader.longWord();
    const std::uint32_t high = hasHighSize ? reader.longWord() : 0;
    const std::size_t before = mark.size() + reader.position();
    static_cast<void>(reader.bytes(size));
    const std::uint16_t sum = reader.word();
    const std::string_view end = reader.bytes(mark.size());
    if (reader.failed() || high != 0) return std::nullopt;
    const std::string_view summed = section.substr(mark.size(), before - mark.size() + size);
    const bool closes = std::ranges::equal(end, mark, [](char a, char b) {
        return (static_cast<unsigned char>(a) ^ static_cast<unsigned char>(b)) == 0xFF;
    });
    if (!closes || !sumsAgree(crc16(kObjectSeed, summed), sum)) return std::nullopt;
    return section.substr(before, size);
}

Result<DwgSections> readSections(const Source& source, const std::string& file) {
    const std::string bytes = source.read(0, kStartBytes);
    const auto refuse = [&](ErrorKind kind, const std::string& text) {
        return Error{kind, file, 0, text};
    };
    DwgSections sections;
    DwgStart& start = sections.start;
    start.version = bytes.substr(0, 6);
    const auto* known = std::ranges::find(kVersions, start.version, &Version::text);
    if (known == std::end(kVersions))
        return refuse(ErrorKind::Unreadable,
                      "a DWG file of version " + start.version +
                          ", which is not read; save it as R2000 or later, or as DXF");
    start.release = known->release;
    if (bytes.size() < kStartBytes || source.size() > kLargestFile)
        return refuse(ErrorKind::Damaged, bytes.size() < kStartBytes
                                              ? "a DWG file that breaks off in its first bytes"
                                              : "a DWG file of more than 2 GiB");
    ByteReader reader(bytes);
    static_cast<void>(reader.bytes(0x0B));
    start.maintenance = reader.byte();
    static_cast<void>(reader.bytes(7));
    start.codePage = reader.word();
    static_cast<void>(reader.bytes(3));
    const std::uint32_t security = start.release >= Release::R2004 ? reader.longWord() : 0;
    if ((security & kEncrypted) != 0)
        return refuse(ErrorKind::Unreadable,
                      "an encrypted drawing, protected by a password; save it without one");
    start.isSigned = (security & kSigned) != 0;
    const std::string wrong = start.release < Release::R2004    ? readFlat(source, sections)
                              : start.release == Release::R2007 ? readPaged2007(source, sections)
                                                                : readPaged(source, sections);
    if (!wrong.empty()) return refuse(ErrorKind::Damaged, "the DWG file is damaged: " + wrong);
    return sections;
}

}  // namespace mor::host
