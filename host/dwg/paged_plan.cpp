#include "host/dwg/bit_writer.h"
#include "host/dwg/checksums.h"
#include "host/dwg/dwg_plan.h"
#include "host/dwg/pack.h"
#include "host/dwg/pages.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kPageBytes = 0x7400;
constexpr std::size_t kUnit = 0x20;

std::string withSequence(std::string bytes, std::size_t size) {
    if (size > bytes.size()) bytes += byteSequence(size - bytes.size());
    return bytes;
}

constexpr std::size_t roundedUp(std::size_t size) { return (size + kUnit - 1) / kUnit * kUnit; }

/// A page that is written anew.
struct FreshPage {
    std::uint32_t section = 0;
    std::uint64_t start = 0;
    std::string payload;
};

/// The texts by which a file names the program that saved it.
std::string applicationInfo() {
    std::string bytes;
    const auto addText = [&bytes](std::string_view text) {
        appendNumber(bytes, text.size() + 1, 2);
        bytes += utf16Of(text);
        bytes.append(2, '\0');
    };
    appendNumber(bytes, 2, 4);
    addText("AppInfoDataList");
    appendNumber(bytes, 3, 4);
    for (const std::string_view text : {"1.0", "Written by moradmin.", "moradmin"}) {
        bytes.append(16, '\0');
        addText(text);
    }
    return bytes;
}

class PagedPlanner {
public:
    PagedPlanner(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan)
        : m_file(file), m_changes(changes), m_plan(plan) {}

    void run();

private:
    void refuse(const std::string& why) { m_plan.refused = why; }
    void prepare();
    void replaceFrom(std::string_view name, const std::string& content, std::size_t from);
    void replaceWhole(std::string_view name, const std::string& content) {
        replaceFrom(name, content, 0);
    }
    void replaceApplicationInfo();
    [[nodiscard]] std::optional<std::string> sectionBytes(std::string_view name) const;
    void layOut();
    void writeHead();
    void writePages();
    void writeKept(const Page& page, std::uint64_t address);
    void writeMaps();
    [[nodiscard]] std::string sectionMap() const;
    [[nodiscard]] static std::string systemPage(std::uint32_t type, const std::string& map);
    [[nodiscard]] std::string movedPreview(const Page& page, std::uint64_t address) const;

    const DwgFile& m_file;
    const ObjectChanges& m_changes;
    SavePlan& m_plan;
    PageLayout m_layout;
    std::map<std::int32_t, FreshPage> m_fresh;  ///< by number
    std::vector<Page> m_pages;                  ///< as they will lie
    std::int32_t m_highest = 0;
    std::uint64_t m_end = 0;
    std::string m_sectionMapPage;
    std::string m_pageMapPage;
};

/// Replaces the pages of a section that hold what lies behind `from`.
void PagedPlanner::replaceFrom(std::string_view name, const std::string& content,
                               std::size_t from) {
    const auto found = std::ranges::find(m_layout.sections, name, &PagedSection::name);
    if (found == m_layout.sections.end()) return;
    if (!found->packed || found->pageSize != kPageBytes)
        return refuse("its section " + found->name + " is not packed");
    std::map<std::uint64_t, std::int32_t> numbers;
    for (const SectionPage& page : found->pages)
        if (page.start >= from) numbers[page.start] = page.number;
    std::erase_if(found->pages, [from](const SectionPage& page) { return page.start >= from; });
    for (std::size_t at = from; at < content.size(); at += kPageBytes) {
        std::string page = content.substr(at, kPageBytes);
        page.resize(kPageBytes, '\0');
        const auto known = numbers.find(at);
        const std::int32_t number = known == numbers.end() ? ++m_highest : known->second;
        FreshPage fresh{found->number, at, pack(page)};
        found->pages.push_back({number, static_cast<std::uint32_t>(fresh.payload.size()), at});
        m_fresh[number] = std::move(fresh);
    }
    found->size = content.size();
}

std::optional<std::string> PagedPlanner::sectionBytes(std::string_view name) const {
    const PagedSection* section = m_layout.section(name);
    if (section == nullptr) return std::nullopt;
    LargeBytes bytes;
    const std::string wrong = readSection(m_file.source(), m_layout, *section, &bytes);
    return wrong.empty() ? std::optional(std::string(bytes)) : std::nullopt;
}

/// Keeps the size of its page: others are named by their addresses.
void PagedPlanner::replaceApplicationInfo() {
    const auto found = std::ranges::find(m_layout.sections, "AcDb:AppInfo", &PagedSection::name);
    if (found == m_layout.sections.end() || found->packed || found->pages.size() != 1) return;
    std::string info = applicationInfo();
    SectionPage& page = found->pages.front();
    if (info.size() > page.payload) return;
    found->size = info.size();
    info.resize(page.payload, '\0');
    m_fresh[page.number] = {found->number, page.start, std::move(info)};
}

void PagedPlanner::prepare() {
    const DwgSections& sections = m_file.sections();
    for (const Page& page : m_layout.pages)
        if (page.number != m_layout.pageMapNumber && page.number != m_layout.sectionMapNumber)
            m_highest = std::max(m_highest, page.number);
    const std::size_t objectsEnd = sections.objects.size();
    const std::string objects = std::string(sections.objects) + newObjects(m_changes);
    if (objects.size() != objectsEnd)
        replaceFrom("AcDb:AcDbObjects", objects, objectsEnd / kPageBytes * kPageBytes);
    replaceWhole("AcDb:Handles", newObjectMap(m_file.map(), m_changes, objectsEnd));
    if (m_changes.seed != 0) {
        replaceWhole("AcDb:Header", headerWithSeed(sections, m_file.header(), m_changes.seed));
        if (const auto auxiliary = sectionBytes("AcDb:AuxHeader"))
            replaceWhole("AcDb:AuxHeader",
                         auxiliaryWithSeed(*auxiliary, m_file.header().seed, m_changes.seed));
    }
    replaceApplicationInfo();
}

/// The pages in the order of the old file, without maps, gaps and pages that no section has any
/// more, the new ones behind.
void PagedPlanner::layOut() {
    std::vector<std::int32_t> used;
    for (const PagedSection& section : m_layout.sections)
        for (const SectionPage& page : section.pages) used.push_back(page.number);
    std::ranges::sort(used);
    constexpr std::uint64_t kFirstPageAt = 0x100;
    m_end = kFirstPageAt;
    const auto place = [&](std::int32_t number, std::uint64_t size) {
        m_pages.push_back({number, m_end, size});
        m_end += size;
    };
    constexpr std::size_t kHeader = 0x20;
    const auto sizeOf = [&](const FreshPage& page) {
        return roundedUp(kHeader + page.payload.size());
    };
    for (const Page& page : m_layout.pages) {
        if (!std::ranges::binary_search(used, page.number)) continue;
        const auto fresh = m_fresh.find(page.number);
        place(page.number, fresh == m_fresh.end() ? page.size : sizeOf(fresh->second));
    }
    for (const auto& [number, page] : m_fresh)
        if (m_layout.page(number) == nullptr) place(number, sizeOf(page));
}

std::string PagedPlanner::systemPage(std::uint32_t type, const std::string& map) {
    std::string packed = pack(map);
    const auto head = [&](std::size_t size, std::size_t packedSize, std::uint32_t sum) {
        std::string bytes;
        for (const std::uint64_t value :
             {std::uint64_t{type}, std::uint64_t{size}, std::uint64_t{packedSize}, std::uint64_t{2},
              std::uint64_t{sum}})
            appendNumber(bytes, value, 4);
        return bytes;
    };
    const std::uint32_t sum = pageSum(pageSum(0, head(map.size(), packed.size(), 0)), packed);
    return head(map.size(), packed.size(), sum) + packed + head(0, 0, 0);
}

std::string PagedPlanner::sectionMap() const {
    std::string map;
    const std::size_t count = m_layout.sections.size();
    for (const std::size_t value : {count, std::size_t{2U}, kPageBytes, std::size_t{0}, count})
        appendNumber(map, value, 4);
    for (const PagedSection& section : m_layout.sections) {
        appendNumber(map, section.size, 8);
        appendNumber(map, section.pages.size(), 4);
        appendNumber(map, section.pageSize, 4);
        appendNumber(map, section.unknown, 4);
        appendNumber(map, section.packed ? 2 : 1, 4);
        appendNumber(map, section.number, 4);
        appendNumber(map, section.protection, 4);
        std::string name = section.name;
        name.resize(64, '\0');
        map += name;
        for (const SectionPage& page : section.pages) {
            appendNumber(map, static_cast<std::uint32_t>(page.number), 4);
            appendNumber(map, page.payload, 4);
            appendNumber(map, page.start, 8);
        }
    }
    return map;
}

void PagedPlanner::writeMaps() {
    m_sectionMapPage = systemPage(kSectionMapType, sectionMap());
    m_sectionMapPage = withSequence(m_sectionMapPage, roundedUp(m_sectionMapPage.size()));
    m_layout.sectionMapNumber = m_highest + 1;
    m_layout.pageMapNumber = m_highest + 2;
    m_pages.push_back({m_layout.sectionMapNumber, m_end, m_sectionMapPage.size()});
    m_end += m_sectionMapPage.size();
    m_layout.pageMapAddress = m_end;
    std::string map;
    for (const Page& page : m_pages) {
        appendNumber(map, static_cast<std::uint32_t>(page.number), 4);
        appendNumber(map, page.size, 4);
    }
    constexpr std::size_t kSystemHeader = 20;
    const std::size_t nominal = roundedUp(2 * kSystemHeader + map.size() + 8);
    appendNumber(map, static_cast<std::uint32_t>(m_layout.pageMapNumber), 4);
    appendNumber(map, nominal, 4);
    m_pageMapPage = systemPage(kPageMapType, map);
    m_pages.push_back({m_layout.pageMapNumber, m_end, nominal});
}

/// The first 0x100 bytes: what names pages by their addresses, and the leading block.
void PagedPlanner::writeHead() {
    constexpr std::uint64_t kFirstPageAt = 0x100;
    std::string head = m_file.source().read(0, kFirstPageAt);
    const auto set = [](std::string& bytes, std::size_t at, std::uint64_t value,
                        std::size_t count) {
        std::string number;
        appendNumber(number, value, count);
        bytes.replace(at, count, number);
    };
    // Preview and properties follow their pages: the address of the page, mostly and 0x20.
    for (const std::size_t at : {0x0DU, 0x20U, 0x24U, 0x2CU}) {
        const std::uint64_t old = ByteReader(std::string_view(head).substr(at)).longWord();
        for (const Page& page : m_layout.pages) {
            if (page.number < 0 || old < page.address || old >= page.address + page.size) continue;
            const auto moved = std::ranges::find(m_pages, page.number, &Page::number);
            if (moved != m_pages.end()) set(head, at, old - page.address + moved->address, 4);
        }
    }
    std::string block = m_layout.block;
    const std::uint64_t copyAt = m_layout.pageMapAddress + m_pageMapPage.size();
    const std::uint64_t sizes = m_pages.back().address + m_pages.back().size - kFirstPageAt;
    for (const std::size_t at : {0x18U, 0x1CU, 0x20U, 0x3CU, 0x64U}) set(block, at, 0, 4);
    set(block, 0x28, static_cast<std::uint32_t>(m_layout.pageMapNumber), 4);
    set(block, 0x2C, sizes, 8);
    set(block, 0x34, copyAt, 8);
    set(block, 0x40, m_pages.size(), 4);
    set(block, 0x50, static_cast<std::uint32_t>(m_layout.pageMapNumber), 4);
    set(block, 0x54, m_layout.pageMapAddress - kFirstPageAt, 8);
    set(block, 0x5C, static_cast<std::uint32_t>(m_layout.sectionMapNumber), 4);
    set(block, 0x60, static_cast<std::uint32_t>(m_layout.pageMapNumber), 4);
    set(block, 0x68, 0, 4);
    set(block, 0x68, crc32(block), 4);
    const std::string mask = byteSequence(block.size());
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<char>(static_cast<unsigned char>(block[i]) ^
                                     static_cast<unsigned char>(mask[i]));
    m_layout.block = block;
    head.replace(0x80, block.size(), block);
    addBytes(m_plan, head);
}

/// A page that nobody changed: its header is masked by its address, all else is copied.
void PagedPlanner::writeKept(const Page& page, std::uint64_t address) {
    if (page.address == address) return addCopy(m_plan, page.address, page.size);
    constexpr std::size_t kHeader = 0x20;
    const PagedSection* preview = m_layout.section("AcDb:Preview");
    if (preview != nullptr && !preview->pages.empty() &&
        preview->pages.front().number == page.number)
        return addBytes(m_plan, movedPreview(page, address));
    std::string head = m_file.source().read(page.address, kHeader);
    const auto change = static_cast<std::uint32_t>(page.address ^ address);
    for (std::size_t i = 0; i < head.size(); ++i)
        head[i] = static_cast<char>(static_cast<unsigned char>(head[i]) ^
                                    (change >> (8 * (i % 4)) & 0xFFU));
    addBytes(m_plan, head);
    addCopy(m_plan, page.address + kHeader, page.size - kHeader);
}

/// The preview holds addresses in the file.
std::string PagedPlanner::movedPreview(const Page& page, std::uint64_t address) const {
    constexpr std::size_t kMark = 16;
    const PagedSection* section = m_layout.section("AcDb:Preview");
    const SectionPage& part = section->pages.front();
    std::string payload = m_file.source().read(page.address + kDataHeaderBytes, part.payload);
    if (payload.size() > kMark + 5) {
        const auto parts = static_cast<unsigned char>(payload[kMark + 4]);
        for (std::size_t i = 0; i < parts; ++i) {
            const std::size_t at = kMark + 5 + i * 9 + 1;
            if (at + 4 > payload.size()) break;
            const std::uint64_t old = ByteReader(std::string_view(payload).substr(at)).longWord();
            std::string number;
            appendNumber(number, old == 0 ? 0 : old - page.address + address, 4);
            payload.replace(at, 4, number);
        }
    }
    return withSequence(dataPage(section->number, part.start, payload, address), page.size);
}

void PagedPlanner::writePages() {
    for (const Page& page : m_pages) {
        if (page.number == m_layout.sectionMapNumber || page.number == m_layout.pageMapNumber)
            continue;
        const auto fresh = m_fresh.find(page.number);
        if (fresh == m_fresh.end()) {
            writeKept(*m_layout.page(page.number), page.address);
            continue;
        }
        const FreshPage& made = fresh->second;
        addBytes(m_plan,
                 withSequence(dataPage(made.section, made.start, made.payload, page.address),
                              page.size));
    }
    addBytes(m_plan, m_sectionMapPage);
    addBytes(m_plan, m_pageMapPage);
    addBytes(m_plan, m_layout.block);
}

void PagedPlanner::run() {
    if (std::string wrong = readLayout(m_file.source(), m_layout); !wrong.empty())
        return refuse(wrong);
    prepare();
    if (!m_plan.refused.empty()) return;
    layOut();
    writeMaps();
    writeHead();
    writePages();
}

}  // namespace

void planPaged(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan) {
    PagedPlanner(file, changes, plan).run();
}

}  // namespace mor::host
