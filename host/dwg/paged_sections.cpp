#include "host/dwg/bit_writer.h"
#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"
#include "host/dwg/pages.h"
#include "host/dwg/unpack.h"

#include <algorithm>
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

/// The payload of a data page, both sums tested; what is wrong is answered in `wrong`.
std::string payloadOf(const Source& source, const PagedSection& section, const SectionPage& part,
                      const Page& page, std::string& wrong) {
    std::string bytes = source.read(page.address, kDataHeaderBytes + std::uint64_t{part.payload});
    wrong = "it is too short";
    if (bytes.size() < kDataHeaderBytes + std::size_t{part.payload}) return {};
    std::string head;
    const auto mask = kDataPageMask ^ static_cast<std::uint32_t>(page.address);
    for (std::size_t at = 0; at < kDataHeaderBytes; at += 4) {
        const auto word = ByteReader(std::string_view(bytes).substr(at)).longWord() ^ mask;
        for (unsigned k = 0; k < 4; ++k) head += static_cast<char>((word >> (8 * k)) & 0xFFU);
    }
    ByteReader reader(head);
    wrong = "its header is another one's";
    if (reader.longWord() != kDataPageType || reader.longWord() != section.number ||
        reader.longWord() != part.payload)
        return {};
    static_cast<void>(reader.bytes(12));
    const std::uint32_t headSum = reader.longWord();
    const std::uint32_t dataSum = reader.longWord();
    const std::string summed = head.substr(0, 0x18) + std::string(4, '\0') + head.substr(0x1C);
    bytes.erase(0, kDataHeaderBytes);
    wrong = "its checksum is wrong";
    if (!sumsAgree(pageSum(dataSum, summed), headSum) || !sumsAgree(pageSum(0, bytes), dataSum))
        return {};
    wrong.clear();
    return bytes;
}

/// Puts a page where it belongs in its section, or only tests it when `out` is null.
std::string placePage(const Source& source, const PageLayout& layout, const PagedSection& section,
                      const SectionPage& part, std::string* out) {
    const Page* page = layout.page(part.number);
    if (page == nullptr) return "it is missing";
    if (std::uint64_t{part.payload} + kDataHeaderBytes > page->size) return "it is too short";
    std::string wrong;
    const std::string payload = payloadOf(source, section, part, *page, wrong);
    if (!wrong.empty() || out == nullptr) return wrong;
    const auto start = static_cast<std::size_t>(part.start);
    const std::size_t room = out->size() - start;
    if (!section.packed) {
        payload.copy(out->data() + start, std::min(payload.size(), room));
        return {};
    }
    // The last page has room for more than its section.
    std::string last(room < kPackedPageBytes ? kPackedPageBytes : 0, '\0');
    char* const to = last.empty() ? out->data() + start : last.data();
    const bool fits = unpack(payload, to, kPackedPageBytes);
    if (fits) last.copy(out->data() + start, room);
    if (!fits && last.empty()) std::fill_n(to, kPackedPageBytes, '\0');
    return fits ? "" : "it cannot be unpacked";
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
                        std::string* out) {
    if (std::string strange = strangeness(section, source.size()); !strange.empty())
        return "the section " + section.name + " " + strange;
    if (out != nullptr) out->assign(static_cast<std::size_t>(section.size), '\0');
    std::string first;
    for (const SectionPage& part : section.pages)
        if (const std::string wrong = placePage(source, layout, section, part, out);
            !wrong.empty() && first.empty())
            first = "page " + std::to_string(part.number) + " of " + section.name + ": " + wrong;
    return first;
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
    std::string measurement;
    const std::pair<std::string_view, std::string*> wanted[] = {
        {"AcDb:AcDbObjects", &sections.objects},
        {"AcDb:Handles", &sections.map},
        {"AcDb:Header", &sections.header},
        {"AcDb:Classes", &sections.classes},
        {"AcDb:Template", &measurement}};
    for (const auto& [name, out] : wanted)
        if (layout.section(name) == nullptr && out != &measurement)
            return "the section " + std::string(name) + " is missing";
    for (const PagedSection& section : layout.sections) {
        const auto* target = std::ranges::find(wanted, section.name,
                                               &std::pair<std::string_view, std::string*>::first);
        std::string* out = target == std::end(wanted) ? nullptr : target->second;
        std::string wrong = readSection(source, layout, section, out);
        if (wrong.empty()) continue;
        const bool read = out != nullptr && out != &measurement;
        if (read && (out != &sections.objects || sections.objects.empty())) return wrong;
        sections.damage.note(wrong, 0);
    }
    sections.metric = measurement.size() >= 4 && measurement[2] == 1;
    return {};
}

}  // namespace mor::host
