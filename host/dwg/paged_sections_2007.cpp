#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/code_words.h"
#include "host/dwg/sections.h"
#include "host/dwg/two_hands.h"
#include "host/dwg/unpack.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

constexpr std::uint64_t kHeaderAt = 0x80;
constexpr std::size_t kHeaderWords = 3;
constexpr std::size_t kHeaderBytes = 0x110;
constexpr std::uint64_t kPagesAt = 0x480;
constexpr std::uint64_t kLargestSystemPage = std::uint64_t{64} << 20U;
constexpr std::uint64_t kLargestPage = std::uint64_t{16} << 20U;
constexpr std::uint64_t kLargestSection = std::uint64_t{1} << 30U;
constexpr std::uint64_t kMostGrowth = 512;
constexpr std::size_t kLongestName = 256;
constexpr std::size_t kMostSections = 64;
constexpr std::uint64_t kInterleaved = 4;
/// Fewer are read before another thread has begun.
constexpr std::size_t kManyPages = 8;

/// Numbers of the header by their place.
enum HeaderNumber : std::size_t {
    kPageMapRepeats = 3,
    kPageMapOffset = 7,
    kPageMapPacked = 10,
    kPageMapSize = 11,
    kSectionMapPacked = 22,
    kSectionMapNumber = 24,
    kSectionMapSize = 25,
    kSectionMapRepeats = 27,
    kHeaderNumbers = 34
};
using Header = std::array<std::uint64_t, kHeaderNumbers>;

constexpr std::uint64_t roundedUp(std::uint64_t count, std::uint64_t unit) {
    return (count + unit - 1) / unit * unit;
}

std::optional<std::string> unpacked(std::string_view packed, std::uint64_t size) {
    if (packed.size() >= size) return std::string(packed.substr(0, static_cast<std::size_t>(size)));
    std::string out(static_cast<std::size_t>(size), '\0');
    if (!unpack2007(packed, out.data(), out.size())) return std::nullopt;
    return out;
}

std::optional<Header> readHeader2007(const Source& source) {
    const std::string coded = source.read(kHeaderAt, kHeaderWords * kCodeWordBytes);
    const std::string data = deinterleaved(coded, kHeaderWords, kSystemData);
    if (!parityHolds(coded, kHeaderWords, kSystemData)) return std::nullopt;
    ByteReader reader(data);
    static_cast<void>(reader.bytes(24));
    const auto length = static_cast<std::int32_t>(reader.longWord());
    static_cast<void>(reader.longWord());
    if (length == INT32_MIN) return std::nullopt;
    const std::string_view packed = reader.bytes(static_cast<std::size_t>(std::abs(length)));
    if (reader.failed()) return std::nullopt;
    std::string plain(packed);
    if (length > 0) {
        plain.assign(kHeaderBytes, '\0');
        if (!unpack2007(packed, plain.data(), plain.size())) return std::nullopt;
    }
    Header header{};
    ByteReader numbers(plain);
    for (std::uint64_t& number : header) number = numbers.number(8);
    return numbers.failed() ? std::nullopt : std::optional(header);
}

/// A map; nothing when it is damaged.
std::optional<std::string> systemPage(const Source& source, std::uint64_t address,
                                      std::uint64_t packed, std::uint64_t size,
                                      std::uint64_t repeats) {
    if (packed > source.size() || repeats == 0 || repeats > source.size() ||
        size > std::min(kLargestSystemPage, packed * 64 + 0x10000))
        return std::nullopt;
    const std::uint64_t coded = roundedUp(packed, 8) * repeats;
    const std::uint64_t words = (coded + kSystemData - 1) / kSystemData;
    if (words > source.size() / kCodeWordBytes) return std::nullopt;
    const std::string bytes = source.read(address, words * kCodeWordBytes);
    const std::string data = deinterleaved(bytes, static_cast<std::size_t>(words), kSystemData);
    if (data.size() < packed || !parityHolds(bytes, static_cast<std::size_t>(words), kSystemData))
        return std::nullopt;
    return unpacked(std::string_view(data).substr(0, static_cast<std::size_t>(packed)), size);
}

struct Part {
    std::uint64_t start = 0;
    std::int64_t page = 0;
    std::uint64_t size = 0;
    std::uint64_t packed = 0;
    std::uint32_t sum = 0;
};

struct Section2007 {
    std::string name;
    std::uint64_t size = 0;
    std::uint64_t encryption = 0;
    std::uint64_t coding = 0;
    std::vector<Part> parts;
};

/// The file as its two maps show it.
class File2007 {
public:
    explicit File2007(const Source& source) : m_source(source) {}

    std::string open();
    [[nodiscard]] const std::vector<Section2007>& sections() const { return m_sections; }
    /// Reads a section into `out`; answers what is wrong with its first damaged page. Damage that
    /// leaves its data as they were is noted.
    std::string read(const Section2007& section, LargeBytes& out, DamageNotes& notes) const;

private:
    bool readPageMap(std::string_view map);
    bool readSectionMap(std::string_view map);
    /// What is seen of a page when it is read.
    enum class Seen : std::uint8_t { Right, WrongParity, Damaged };
    [[nodiscard]] Seen place(const Section2007& section, const Part& part, LargeBytes& out) const;
    [[nodiscard]] static bool rises(const std::vector<Part>& parts);

    const Source& m_source;
    std::map<std::int64_t, std::pair<std::uint64_t, std::uint64_t>> m_pages;  ///< address, size
    std::vector<Section2007> m_sections;
};

std::string File2007::open() {
    const auto header = readHeader2007(m_source);
    if (!header) return "the block that leads to its pages cannot be unpacked";
    const Header& h = *header;
    const std::uint64_t mapAt = h[kPageMapOffset] + kPagesAt;
    if (mapAt < kPagesAt || mapAt >= m_source.size())
        return "its page map lies outside of the file";
    const auto pageMap =
        systemPage(m_source, mapAt, h[kPageMapPacked], h[kPageMapSize], h[kPageMapRepeats]);
    if (!pageMap || !readPageMap(*pageMap)) return "its page map is damaged";
    const auto found = m_pages.find(static_cast<std::int64_t>(h[kSectionMapNumber]));
    if (found == m_pages.end()) return "its section map is missing";
    const auto sectionMap = systemPage(m_source, found->second.first, h[kSectionMapPacked],
                                       h[kSectionMapSize], h[kSectionMapRepeats]);
    if (!sectionMap || !readSectionMap(*sectionMap)) return "its section map is damaged";
    return {};
}

bool File2007::readPageMap(std::string_view map) {
    ByteReader reader(map);
    std::uint64_t address = kPagesAt;
    while (reader.remaining() >= 16) {
        const std::uint64_t size = reader.number(8);
        const auto number = static_cast<std::int64_t>(reader.number(8));
        if (size > m_source.size()) return false;
        if (number > 0 && !m_pages.emplace(number, std::pair(address, size)).second) return false;
        address += size;
        if (address > m_source.size() + kLargestPage) return false;
    }
    return true;
}

bool File2007::readSectionMap(std::string_view map) {
    ByteReader reader(map);
    while (reader.remaining() >= 64 && m_sections.size() < kMostSections) {
        Section2007 section;
        section.size = reader.number(8);
        static_cast<void>(reader.number(8));
        section.encryption = reader.number(8);
        static_cast<void>(reader.number(8));
        const std::uint64_t nameBytes = reader.number(8);
        static_cast<void>(reader.number(8));
        section.coding = reader.number(8);
        const std::uint64_t parts = reader.number(8);
        if (nameBytes > kLongestName || parts > reader.remaining() / 56) return false;
        const std::string_view name = reader.bytes(static_cast<std::size_t>(nameBytes));
        for (std::size_t i = 0; i + 1 < name.size() && name[i] != '\0'; i += 2)
            section.name += name[i];
        for (std::uint64_t i = 0; i < parts; ++i) {
            Part part;
            part.start = reader.number(8);
            static_cast<void>(reader.number(8));
            part.page = static_cast<std::int64_t>(reader.number(8));
            part.size = reader.number(8);
            part.packed = reader.number(8);
            part.sum = static_cast<std::uint32_t>(reader.number(8));
            static_cast<void>(reader.number(8));
            section.parts.push_back(part);
        }
        m_sections.push_back(std::move(section));
    }
    return !reader.failed();
}

/// Reads a page and puts it where it belongs in its section.
File2007::Seen File2007::place(const Section2007& section, const Part& part,
                               LargeBytes& out) const {
    const auto found = m_pages.find(part.page);
    if (found == m_pages.end() || part.packed > m_source.size() || part.size > kLargestPage ||
        part.start > section.size)
        return Seen::Damaged;
    const auto& [address, size] = found->second;
    std::string data;
    bool parity = true;
    if (section.coding == kInterleaved) {
        const std::uint64_t words = (roundedUp(part.packed, 8) + kPageData - 1) / kPageData;
        if (words * kCodeWordBytes > size) return Seen::Damaged;
        const std::string coded = m_source.read(address, words * kCodeWordBytes);
        data = deinterleaved(coded, static_cast<std::size_t>(words), kPageData);
        parity = parityHolds(coded, static_cast<std::size_t>(words), kPageData);
    } else {
        data = m_source.read(address, std::min(size, part.packed));
    }
    if (data.size() < part.packed) return Seen::Damaged;
    const auto plain = unpacked(
        std::string_view(data).substr(0, static_cast<std::size_t>(part.packed)), part.size);
    if (!plain || !sumsAgree(pageSum2007(*plain), part.sum)) return Seen::Damaged;
    const auto start = static_cast<std::size_t>(part.start);
    plain->copy(out.data() + start, out.size() - start);
    return parity ? Seen::Right : Seen::WrongParity;
}

/// Whether each page begins behind the one before it: then they can be placed in any order.
bool File2007::rises(const std::vector<Part>& parts) {
    for (std::size_t i = 1; i < parts.size(); ++i)
        if (parts[i].start < parts[i - 1].start ||
            parts[i].start - parts[i - 1].start < parts[i - 1].size)
            return false;
    return true;
}

std::string File2007::read(const Section2007& section, LargeBytes& out, DamageNotes& notes) const {
    if (section.size > kLargestSection || section.size > kMostGrowth * m_source.size())
        return "the section " + section.name + " is said to have " + std::to_string(section.size) +
               " bytes";
    out = LargeBytes(static_cast<std::size_t>(section.size));
    std::vector<Seen> seen(section.parts.size());
    inTwoHands({seen.size(), 1, rises(section.parts) ? kManyPages : seen.size() + 1},
               [&](std::size_t begin, std::size_t /*end*/, unsigned /*hand*/) {
                   seen[begin] = place(section, section.parts[begin], out);
               });
    std::string first;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        const std::int64_t number = section.parts[i].page;
        const std::string page = "page " + std::to_string(number) + " of " + section.name;
        if (seen[i] == Seen::WrongParity)
            notes.note(page + ": its parity is wrong, its checksum right",
                       m_pages.at(number).first);
        if (seen[i] == Seen::Damaged && first.empty())
            first = page + ": its checksum is wrong, or it cannot be unpacked";
    }
    return first;
}

}  // namespace

std::string readPaged2007(const Source& source, DwgSections& sections) {
    File2007 file(source);
    if (std::string wrong = file.open(); !wrong.empty()) return wrong;
    LargeBytes settings;
    const std::pair<std::string_view, LargeBytes*> wanted[] = {
        {"AcDb:Handles", &sections.map},
        {"AcDb:Header", &sections.header},
        {"AcDb:Classes", &sections.classes},
        {"AcDb:Template", &settings},
        {"AcDb:AcDbObjects", &sections.objects}};
    std::size_t found = 0;
    for (const Section2007& section : file.sections()) {
        const auto* target = std::ranges::find(wanted, section.name,
                                               &std::pair<std::string_view, LargeBytes*>::first);
        LargeBytes other;
        LargeBytes* out = target == std::end(wanted) ? &other : target->second;
        std::string wrong = file.read(section, *out, sections.damage);
        if (out != &other && out != &settings) ++found;
        if (wrong.empty()) continue;
        const bool confined =
            out == &other || out == &settings || (out == &sections.objects && !out->empty());
        if (!confined) return wrong;
        sections.damage.note(wrong, 0);
    }
    if (found < 4) return "one of its sections is missing";
    const std::string_view measurement = settings;
    sections.metric = measurement.size() >= 4 && measurement[2] == 1;
    return {};
}

}  // namespace mor::host
