#include "host/dwg/bit_writer.h"
#include "host/dwg/checksums.h"
#include "host/dwg/dwg_plan.h"
#include "host/dwg/flat_sections.h"

#include <algorithm>
#include <map>
#include <optional>

namespace mor::host {

namespace {

constexpr std::size_t kPreviewAt = 0x0D;
constexpr std::size_t kHeaderNumber = 0;
constexpr std::size_t kMapNumber = 2;
constexpr std::size_t kAuxiliaryNumber = 5;

/// The first bytes with other locators and their sum.
std::string newHead(std::string_view bytes, const FlatLocators& locators) {
    std::string head(bytes.substr(0, kLocatorsAt));
    for (std::size_t i = 0; i < locators.count; ++i) {
        appendNumber(head, locators.numbers[i], 1);
        const FlatLocator& found = locators.at[locators.numbers[i]];
        appendNumber(head, found.address, 4);
        appendNumber(head, found.size, 4);
    }
    appendNumber(head, crc16(0, head) ^ locatorMask(locators.count), 2);
    return head;
}

/// The second header where it will stand.
std::string newSecondHeader(const SecondHeader& old, std::uint64_t address,
                            const FlatLocators& locators, std::uint64_t seed) {
    constexpr std::uint64_t kSizeBits = 32;
    const std::string_view body = old.body;
    BitWriter out;
    out.bitLong(static_cast<std::int64_t>(address));
    const std::uint64_t locatorsBegin =
        old.locators.empty() ? old.handlesBegin : old.locators.front().begin;
    out.copy(body, old.fixedBegin, locatorsBegin);
    for (const SecondHeader::Field& field : old.locators) {
        const bool known = !field.none && field.number < locators.at.size();
        const FlatLocator found = known ? locators.at[field.number] : FlatLocator();
        out.byte(field.number);
        out.bitLong(static_cast<std::int64_t>(found.address));
        out.bitLong(static_cast<std::int64_t>(found.size));
    }
    out.copy(body, old.handlesBegin,
             old.handles.empty() ? old.handlesBegin + 2 : old.handles.front().begin);
    for (const SecondHeader::Field& field : old.handles) {
        if (field.number != 0 || seed == 0) {
            out.copy(body, field.begin, field.end);
            continue;
        }
        std::string handle;
        std::size_t length = 1;
        while (length < 8 && seed >> (8 * length) != 0) ++length;
        appendHighFirst(handle, seed, length);
        out.byte(length);
        out.byte(0);
        out.text(handle);
    }
    const std::string junk(body.substr(old.sumAt + 2));
    std::string summed;
    appendNumber(summed, kSizeBits / 8 + out.bytes().size() + 2 + junk.size(), 4);
    summed += out.bytes();
    appendNumber(summed, crc16(kObjectSeed, summed), 2);
    std::string end(kSecondMark);
    for (char& c : end) c = static_cast<char>(~static_cast<unsigned char>(c));
    return std::string(kSecondMark) + summed + junk + end;
}

/// Copies what stands before the object map, puts the new objects and the new map behind it, then
/// what stood behind the old one.
class FlatPlanner {
public:
    FlatPlanner(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan)
        : m_file(file), m_changes(changes), m_plan(plan), m_bytes(file.sections().objects) {}

    void run();

private:
    [[nodiscard]] bool findParts();
    void changeSeed();
    void placeTail();
    void write();

    const DwgFile& m_file;
    const ObjectChanges& m_changes;
    SavePlan& m_plan;
    std::string_view m_bytes;
    FlatLocators m_locators;
    std::size_t m_mapAt = 0;
    std::size_t m_behind = 0;                        ///< the old map
    std::map<std::uint64_t, std::string> m_patches;  ///< of what stands before the map
    std::string m_objects;
    std::string m_grown;  ///< header variables that no longer fit where they were
    std::string m_map;
    std::string m_tail;
    std::size_t m_secondAt = 0;  ///< in the tail; npos: there is none
    std::optional<SecondHeader> m_second;
};

bool FlatPlanner::findParts() {
    const auto refuse = [this](const char* why) {
        m_plan.refused = why;
        return false;
    };
    if (!readLocators(m_bytes, m_locators).empty()) return refuse("its locators are damaged");
    const FlatLocator map = m_locators.at[kMapNumber];
    m_mapAt = static_cast<std::size_t>(map.address);
    m_behind = static_cast<std::size_t>(map.address + map.size);
    if (ByteReader(m_bytes.substr(kPreviewAt)).longWord() >= m_mapAt)
        return refuse("its preview lies behind its objects");
    m_tail = m_bytes.substr(m_behind);
    m_secondAt = m_tail.find(kSecondMark);
    if (m_secondAt == std::string::npos) return true;
    m_second = readSecondHeader(m_bytes.substr(m_behind + m_secondAt));
    return m_second ? true : refuse("its second header is damaged");
}

void FlatPlanner::changeSeed() {
    if (m_changes.seed == 0) return;
    const FlatLocator header = m_locators.at[kHeaderNumber];
    std::string variables = headerWithSeed(m_file.sections(), m_file.header(), m_changes.seed);
    if (variables.size() == header.size)
        m_patches[header.address] = std::move(variables);
    else
        m_grown = std::move(variables);
    const FlatLocator auxiliary = m_locators.at[kAuxiliaryNumber];
    if (auxiliary.size != 0 && auxiliary.address < m_mapAt)
        m_patches[auxiliary.address] = auxiliaryWithSeed(
            std::string(m_bytes.substr(static_cast<std::size_t>(auxiliary.address),
                                       static_cast<std::size_t>(auxiliary.size))),
            m_file.header().seed, m_changes.seed);
}

/// What lies behind moves; the second header names all places and may get another length.
void FlatPlanner::placeTail() {
    const std::uint64_t mapAt = m_mapAt + m_objects.size() + m_grown.size();
    const std::uint64_t behind = mapAt + m_map.size();
    if (!m_grown.empty())
        m_locators.at[kHeaderNumber] = {m_mapAt + m_objects.size(), m_grown.size()};
    m_locators.at[kMapNumber] = {mapAt, m_map.size()};
    const FlatLocators old = m_locators;
    for (int pass = 0; pass < 2; ++pass) {
        const std::size_t growth = m_tail.size() - (m_bytes.size() - m_behind);
        for (std::size_t number = kMapNumber + 1; number < m_locators.at.size(); ++number) {
            const std::uint64_t address = old.at[number].address;
            if (address < m_behind) continue;
            const bool beyond = m_second && address > m_behind + m_secondAt;
            m_locators.at[number].address = address - m_behind + behind + (beyond ? growth : 0);
        }
        if (!m_second) return;
        const std::size_t after =
            m_behind + m_secondAt + 2 * kSecondMark.size() + m_second->body.size();
        m_tail = std::string(m_bytes.substr(m_behind, m_secondAt)) +
                 newSecondHeader(*m_second, behind + m_secondAt, m_locators, m_changes.seed) +
                 std::string(m_bytes.substr(after));
    }
}

void FlatPlanner::write() {
    std::uint64_t at = 0;
    for (const auto& [place, patch] : m_patches) {
        addCopy(m_plan, at, place - at);
        addBytes(m_plan, patch);
        at = place + patch.size();
    }
    addCopy(m_plan, at, m_mapAt - at);
    for (const std::string& part : {m_objects, m_grown, m_map, m_tail}) addBytes(m_plan, part);
}

void FlatPlanner::run() {
    if (!findParts()) return;
    changeSeed();
    m_objects = newObjects(m_changes);
    m_map = newObjectMap(m_file.map(), m_changes, m_mapAt);
    placeTail();
    m_patches[0] = newHead(m_bytes, m_locators);
    write();
}

}  // namespace

void planFlat(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan) {
    FlatPlanner(file, changes, plan).run();
}

}  // namespace mor::host
