#include "host/dwg/bit_writer.h"
#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/pages.h"
#include "host/dwg/two_hands.h"
#include "host/dwg/unpack.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mor::host {

namespace {

constexpr std::uint64_t kBlockAt = 0x80;
constexpr std::size_t kBlockBytes = 0x6C;
constexpr std::size_t kBlockSumAt = 0x68;
constexpr std::string_view kBlockMark("AcFssFcAJMB\0", 12);
constexpr std::uint64_t kFirstPageAt = 0x100;
constexpr std::uint32_t kDataPageType = 0x4163043B;
constexpr std::uint32_t kDataPageMask = 0x4164536B;
constexpr std::size_t kSystemHeaderBytes = 20;
constexpr std::size_t kLargestSystemPage = std::size_t{64} << 20U;
constexpr std::uint64_t kPackedPageBytes = 0x7400;
/// Fewer are read before another thread has begun.
constexpr std::size_t kManyPages = 16;
constexpr std::uint64_t kLargestPlainPage = std::uint64_t{1} << 20U;
constexpr std::uint64_t kLargestSection = std::uint64_t{1} << 30U;
constexpr std::uint64_t kMostGrowth = 512;
constexpr std::uint32_t kMostSections = 64;
constexpr std::size_t kNameBytes = 64;
constexpr std::uint32_t kPacked = 2;
constexpr std::uint32_t kEncryptedSection = 1;

std::string sumIsWrong(const std::string& what) { return "the checksum of " + what + " is wrong"; }

/// A system page, its sum tested; empty when it is damaged.
std::string systemPage(const Source& source, std::uint64_t address, std::uint32_t type) {
    const std::string head = source.read(address, kSystemHeaderBytes);
    ByteReader reader(head);
    const std::uint32_t kind = reader.longWord();
    const std::size_t size = reader.longWord();
    const std::size_t packed = reader.longWord();
    const std::uint32_t method = reader.longWord();
    const std::uint32_t sum = reader.longWord();
    if (reader.failed() || kind != type || method != kPacked || packed > source.size() ||
        size > std::min(kLargestSystemPage, packed * 64 + 0x10000))
        return {};
    const std::string bytes = source.read(address + kSystemHeaderBytes, packed);
    const std::string summed = head.substr(0, kSystemHeaderBytes - 4) + std::string(4, '\0');
    if (bytes.size() != packed || !sumsAgree(pageSum(pageSum(0, summed), bytes), sum)) return {};
    std::string page(size, '\0');
    if (!unpack(bytes, page.data(), page.size())) return {};
    return page;
}

/// The block that leads to the maps; wrong ones are answered as text.
std::string readLeadingBlock(const Source& source, PageLayout& layout) {
    std::string block = source.read(kBlockAt, kBlockBytes);
    if (block.size() != kBlockBytes) return "it breaks off in its first bytes";
    const std::string mask = byteSequence(kBlockBytes);
    std::ranges::transform(block, mask, block.begin(), [](char a, char b) {
        return static_cast<char>(static_cast<unsigned char>(a) ^ static_cast<unsigned char>(b));
    });
    if (!block.starts_with(kBlockMark)) return "the block that leads to its pages is none";
    const std::uint32_t sum = ByteReader(std::string_view(block).substr(kBlockSumAt)).longWord();
    std::string summed = block;
    summed.replace(kBlockSumAt, 4, 4, '\0');
    if (!sumsAgree(crc32(summed), sum)) return sumIsWrong("the block that leads to its pages");
    const auto number = [&](std::size_t at, std::size_t bytes) {
        return ByteReader(std::string_view(block).substr(at)).number(bytes);
    };
    layout.block = block;
    layout.pageMapNumber = static_cast<std::int32_t>(number(0x50, 4));
    layout.pageMapAddress = number(0x54, 8) + kFirstPageAt;
    layout.sectionMapNumber = static_cast<std::int32_t>(number(0x5C, 4));
    return {};
}

std::string readPageMap(const Source& source, PageLayout& layout) {
    if (layout.pageMapAddress >= source.size()) return "its page map lies outside of the file";
    const std::string map = systemPage(source, layout.pageMapAddress, kPageMapType);
    if (map.empty()) return sumIsWrong("its page map");
    ByteReader reader(map);
    std::uint64_t address = kFirstPageAt;
    while (reader.remaining() >= 8) {
        Page page;
        page.number = static_cast<std::int32_t>(reader.longWord());
        page.size = reader.longWord();
        page.address = address;
        if (page.number < 0) static_cast<void>(reader.bytes(16));
        // The page map's own size is often too large.
        if (page.number != layout.pageMapNumber &&
            (page.size == 0 || page.size > source.size() - address))
            return "page " + std::to_string(page.number) + " lies outside of the file";
        address = std::min(address + page.size, source.size());
        layout.pages.push_back(page);
        if (page.number >= 0 &&
            !layout.byNumber.emplace(page.number, layout.pages.size() - 1).second)
            return "page " + std::to_string(page.number) + " stands twice in its page map";
    }
    return reader.failed() ? "its page map breaks off" : "";
}

/// Whether sizes and places of a section bound what it may take.
std::string strangeness(const PagedSection& section, std::uint64_t fileSize) {
    const bool packed = section.packed;
    if (section.encrypted) return "is encrypted";
    if (section.size > kLargestSection || section.size > kMostGrowth * fileSize)
        return "is said to have " + std::to_string(section.size) + " bytes";
    if (packed ? section.pageSize != kPackedPageBytes : section.pageSize > kLargestPlainPage)
        return "has pages of " + std::to_string(section.pageSize) + " bytes";
    for (const SectionPage& page : section.pages)
        if (page.start > section.size) return "has a page behind its end";
    return {};
}

std::string readSectionMap(const Source& source, PageLayout& layout) {
    const Page* page = layout.page(layout.sectionMapNumber);
    if (page == nullptr) return "its section map is missing";
    const std::string map = systemPage(source, page->address, kSectionMapType);
    if (map.empty()) return sumIsWrong("its section map");
    ByteReader reader(map);
    const std::uint32_t count = reader.longWord();
    if (count > kMostSections) return "it has " + std::to_string(count) + " sections";
    static_cast<void>(reader.bytes(16));
    for (std::uint32_t i = 0; i < count; ++i) {
        PagedSection section;
        section.size = reader.number(8);
        const std::uint32_t pages = reader.longWord();
        section.pageSize = reader.longWord();
        section.unknown = reader.longWord();
        section.packed = reader.longWord() == kPacked;
        section.number = reader.longWord();
        const std::uint32_t protection = reader.longWord();
        section.protection = protection;
        section.encrypted = protection == kEncryptedSection;
        const std::string_view name = reader.bytes(kNameBytes);
        section.name = name.substr(0, name.find('\0'));
        if (pages > reader.remaining() / 16) return "its section map breaks off";
        for (std::uint32_t k = 0; k < pages; ++k) {
            SectionPage part;
            part.number = static_cast<std::int32_t>(reader.longWord());
            part.payload = reader.longWord();
            part.start = reader.number(8);
            section.pages.push_back(part);
        }
        layout.sections.push_back(std::move(section));
    }
    return reader.failed() ? "its section map breaks off" : "";
}

/// Reads pages of one section, one after the other.
class PageReader {
public:
    /// `out` null: pages are only tested.
    PageReader(const Source& source, const PageLayout& layout, const PagedSection& section,
               LargeBytes* out)
        : m_source(source), m_layout(layout), m_section(section), m_out(out) {}

    /// Puts a page where it belongs in its section; answers what is wrong with it.
    std::string place(const SectionPage& part);

private:
    std::string readPayload(const SectionPage& part, const Page& page);
    bool unpackTo(std::size_t start);

    const Source& m_source;
    const PageLayout& m_layout;
    const PagedSection& m_section;
    LargeBytes* m_out;
    std::string m_bytes;         ///< of a page
    std::string_view m_payload;  ///< in them
};

/// Tests both sums of a data page.
std::string PageReader::readPayload(const SectionPage& part, const Page& page) {
    const std::size_t size = kDataHeaderBytes + std::size_t{part.payload};
    if (m_bytes.size() < size) m_bytes.resize(size);
    if (m_source.read(page.address, m_bytes.data(), size) < size) return "it is too short";
    std::string head;
    const auto mask = kDataPageMask ^ static_cast<std::uint32_t>(page.address);
    for (std::size_t at = 0; at < kDataHeaderBytes; at += 4)
        appendNumber(head, ByteReader(std::string_view(m_bytes).substr(at)).longWord() ^ mask, 4);
    ByteReader reader(head);
    if (reader.longWord() != kDataPageType || reader.longWord() != m_section.number ||
        reader.longWord() != part.payload)
        return "its header is another one's";
    static_cast<void>(reader.bytes(12));
    const std::uint32_t headSum = reader.longWord();
    const std::uint32_t dataSum = reader.longWord();
    head.replace(0x18, 4, 4, '\0');
    m_payload = std::string_view(m_bytes).substr(kDataHeaderBytes, part.payload);
    if (!sumsAgree(pageSum(dataSum, head), headSum) || !sumsAgree(pageSum(0, m_payload), dataSum))
        return "its checksum is wrong";
    return {};
}

/// The last page has room for more than its section.
bool PageReader::unpackTo(std::size_t start) {
    char* const to = m_out->data() + start;
    const std::size_t room = m_out->size() - start;
    if (room >= kPackedPageBytes) {
        const bool fits = unpack(m_payload, to, kPackedPageBytes);
        if (!fits) std::fill_n(to, kPackedPageBytes, '\0');
        return fits;
    }
    std::string last(kPackedPageBytes, '\0');
    const bool fits = unpack(m_payload, last.data(), last.size());
    if (fits) last.copy(to, room);
    return fits;
}

std::string PageReader::place(const SectionPage& part) {
    const Page* page = m_layout.page(part.number);
    if (page == nullptr) return "it is missing";
    if (std::uint64_t{part.payload} + kDataHeaderBytes > page->size) return "it is too short";
    if (std::string wrong = readPayload(part, *page); !wrong.empty() || m_out == nullptr)
        return wrong;
    const auto start = static_cast<std::size_t>(part.start);
    if (m_section.packed) return unpackTo(start) ? "" : "it cannot be unpacked";
    m_payload.copy(m_out->data() + start, m_out->size() - start);
    return {};
}

/// Whether each page lies behind the one before it: then they can be placed in any order.
bool rises(const std::vector<SectionPage>& pages) {
    for (std::size_t i = 1; i < pages.size(); ++i)
        if (pages[i].start < pages[i - 1].start ||
            pages[i].start - pages[i - 1].start < kPackedPageBytes)
            return false;
    return true;
}

}  // namespace

const Page* PageLayout::page(std::int32_t number) const {
    const auto found = byNumber.find(number);
    return found == byNumber.end() ? nullptr : &pages[found->second];
}

const PagedSection* PageLayout::section(std::string_view name) const {
    const auto found = std::ranges::find(sections, name, &PagedSection::name);
    return found == sections.end() ? nullptr : &*found;
}

std::string readSection(const Source& source, const PageLayout& layout, const PagedSection& section,
                        LargeBytes* out) {
    if (std::string strange = strangeness(section, source.size()); !strange.empty())
        return "the section " + section.name + " " + strange;
    if (out != nullptr) *out = LargeBytes(static_cast<std::size_t>(section.size));
    std::vector<std::string> wrong(section.pages.size());
    const bool any = section.packed && rises(section.pages);
    const PageReader reader(source, layout, section, out);
    std::array<PageReader, 2> readers{reader, reader};
    inTwoHands({wrong.size(), 1, any ? kManyPages : wrong.size() + 1},
               [&](std::size_t begin, std::size_t /*end*/, unsigned hand) {
                   wrong[begin] = readers[hand].place(section.pages[begin]);
               });
    for (std::size_t i = 0; i < wrong.size(); ++i)
        if (!wrong[i].empty())
            return "page " + std::to_string(section.pages[i].number) + " of " + section.name +
                   ": " + wrong[i];
    return {};
}

std::string dataPage(std::uint32_t section, std::uint64_t start, std::string_view payload,
                     std::uint64_t address) {
    constexpr std::size_t kUnit = 0x20;
    constexpr std::size_t kSumAt = 0x18;
    const std::size_t size = (kDataHeaderBytes + payload.size() + kUnit - 1) / kUnit * kUnit;
    const std::uint32_t dataSum = pageSum(0, payload);
    std::string head;
    appendNumber(head, kDataPageType, 4);
    appendNumber(head, section, 4);
    appendNumber(head, payload.size(), 4);
    appendNumber(head, size, 4);
    appendNumber(head, start, 8);
    appendNumber(head, 0, 4);
    appendNumber(head, dataSum, 4);
    std::string sum;
    appendNumber(sum, pageSum(dataSum, head), 4);
    head.replace(kSumAt, sum.size(), sum);
    const auto mask = kDataPageMask ^ static_cast<std::uint32_t>(address);
    for (std::size_t i = 0; i < head.size(); ++i)
        head[i] = static_cast<char>(static_cast<unsigned char>(head[i]) ^
                                    (mask >> (8 * (i % 4)) & 0xFFU));
    return head + std::string(payload);
}

std::string readLayout(const Source& source, PageLayout& layout) {
    for (const auto step : {readLeadingBlock, readPageMap, readSectionMap})
        if (std::string wrong = step(source, layout); !wrong.empty()) return wrong;
    return {};
}

std::string readPaged(const Source& source, DwgSections& sections) {
    PageLayout layout;
    if (std::string wrong = readLayout(source, layout); !wrong.empty()) return wrong;
    LargeBytes settings;
    const std::pair<std::string_view, LargeBytes*> wanted[] = {
        {"AcDb:AcDbObjects", &sections.objects},
        {"AcDb:Handles", &sections.map},
        {"AcDb:Header", &sections.header},
        {"AcDb:Classes", &sections.classes},
        {"AcDb:Template", &settings}};
    for (const auto& [name, out] : wanted)
        if (layout.section(name) == nullptr && out != &settings)
            return "the section " + std::string(name) + " is missing";
    for (const PagedSection& section : layout.sections) {
        const auto* target = std::ranges::find(wanted, section.name,
                                               &std::pair<std::string_view, LargeBytes*>::first);
        LargeBytes* out = target == std::end(wanted) ? nullptr : target->second;
        std::string wrong = readSection(source, layout, section, out);
        if (wrong.empty()) continue;
        const bool read = out != nullptr && out != &settings;
        if (read && (out != &sections.objects || sections.objects.empty())) return wrong;
        sections.damage.note(wrong, 0);
    }
    const std::string_view measurement = settings;
    sections.metric = measurement.size() >= 4 && measurement[2] == 1;
    return {};
}

}  // namespace mor::host
