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

}  // namespace

void planFlat(const DwgFile& file, const ObjectChanges& changes, SavePlan& plan) {
    const std::string_view bytes = file.sections().objects;
    FlatLocators locators;
    if (!readLocators(bytes, locators).empty())
        return void(plan.refused = "its locators are damaged");
    const FlatLocator map = locators.at[kMapNumber];
    const std::size_t mapAt = map.address;
    const std::size_t behind = mapAt + map.size;
    const std::uint64_t preview = ByteReader(bytes.substr(kPreviewAt)).longWord();
    if (preview >= mapAt) return void(plan.refused = "its preview lies behind its objects");
    std::map<std::uint64_t, std::string> patches;  // of what stands before the map
    const FlatLocator header = locators.at[kHeaderNumber];
    std::string grown;
    if (changes.seed != 0) {
        std::string variables = headerWithSeed(file.sections(), file.header(), changes.seed);
        if (variables.size() == header.size)
            patches[header.address] = std::move(variables);
        else
            grown = std::move(variables);
        const FlatLocator auxiliary = locators.at[kAuxiliaryNumber];
        if (auxiliary.size != 0 && auxiliary.address < mapAt)
            patches[auxiliary.address] =
                auxiliaryWithSeed(std::string(bytes.substr(auxiliary.address, auxiliary.size)),
                                  file.header().seed, changes.seed);
    }
    const std::string objects = newObjects(changes);
    const std::string newMap = newObjectMap(file.map(), changes, mapAt);
    const std::uint64_t newMapAt = mapAt + objects.size() + grown.size();
    const std::uint64_t newBehind = newMapAt + newMap.size();
    std::string tail(bytes.substr(behind));
    // What lies behind moves, the second header may get another length.
    const std::size_t secondAt = tail.find(kSecondMark);
    std::optional<SecondHeader> oldSecond;
    if (secondAt != std::string::npos) {
        oldSecond = readSecondHeader(bytes.substr(behind + secondAt));
        if (!oldSecond) return void(plan.refused = "its second header is damaged");
    }
    if (!grown.empty()) locators.at[kHeaderNumber] = {mapAt + objects.size(), grown.size()};
    locators.at[kMapNumber] = {newMapAt, newMap.size()};
    const FlatLocators old = locators;
    for (int pass = 0; pass < 2; ++pass) {
        const std::size_t length = tail.size() - (bytes.size() - behind);
        for (std::size_t number = 3; number < locators.at.size(); ++number) {
            FlatLocator& found = locators.at[number];
            if (old.at[number].address < behind) continue;
            const bool beyond =
                secondAt != std::string::npos && old.at[number].address > behind + secondAt;
            found.address = old.at[number].address - behind + newBehind + (beyond ? length : 0);
        }
        if (secondAt == std::string::npos) break;
        const std::string second =
            newSecondHeader(*oldSecond, newBehind + secondAt, locators, changes.seed);
        tail = std::string(bytes.substr(behind, secondAt)) + second +
               std::string(bytes.substr(behind + secondAt + 2 * kSecondMark.size() +
                                        oldSecond->body.size()));
    }
    patches[0] = newHead(bytes, locators);
    std::uint64_t at = 0;
    for (const auto& [place, patch] : patches) {
        addCopy(plan, at, place - at);
        addBytes(plan, patch);
        at = place + patch.size();
    }
    addCopy(plan, at, mapAt - at);
    addBytes(plan, objects);
    addBytes(plan, grown);
    addBytes(plan, newMap);
    addBytes(plan, tail);
}

}  // namespace mor::host
