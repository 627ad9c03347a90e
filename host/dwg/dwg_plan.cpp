#include "host/dwg/dwg_plan.h"

#include "host/dwg/bit_writer.h"
#include "host/dwg/checksums.h"

#include <algorithm>
#include <array>
#include <limits>

namespace mor::host {

namespace {

constexpr std::size_t kLargestChunk = 2032;
constexpr std::size_t kMarkBytes = 16;
constexpr std::array<std::size_t, 2> kAuxiliarySeedAt = {0x4F, 0x55};

void appendChunk(std::string& map, std::string_view pairs) {
    std::string chunk;
    appendHighFirst(chunk, pairs.size() + 2, 2);
    chunk += pairs;
    appendHighFirst(chunk, crc16(kObjectSeed, chunk), 2);
    map += chunk;
}

}  // namespace

std::string newObjects(const ObjectChanges& changes) {
    std::string bytes;
    for (const auto& [handle, object] : changes.written) bytes += object;
    return bytes;
}

std::string newObjectMap(const ObjectMap& map, const ObjectChanges& changes, std::uint64_t base) {
    std::vector<MapEntry> entries;
    std::vector<std::uint64_t> erased = changes.erased;
    std::ranges::sort(erased);
    for (const MapEntry& entry : map.entries())
        if (!changes.written.contains(entry.handle) &&
            !std::ranges::binary_search(erased, entry.handle))
            entries.push_back(entry);
    for (const auto& [handle, object] : changes.written) {
        entries.push_back({handle, base});
        base += object.size();
    }
    std::ranges::sort(entries, {}, &MapEntry::handle);
    std::string bytes;
    std::string pairs;
    MapEntry last;
    for (const MapEntry& entry : entries) {
        std::string pair;
        const auto encode = [&] {
            pair.clear();
            appendUnsignedModularChar(pair, entry.handle - last.handle);
            appendModularChar(pair, static_cast<std::int64_t>(entry.place) -
                                        static_cast<std::int64_t>(last.place));
        };
        encode();
        if (pairs.size() + pair.size() + 2 > kLargestChunk) {
            appendChunk(bytes, pairs);
            pairs.clear();
            last = MapEntry();  // every chunk begins anew
            encode();
        }
        pairs += pair;
        last = entry;
    }
    if (!pairs.empty()) appendChunk(bytes, pairs);
    appendChunk(bytes, "");
    return bytes;
}

std::string headerWithSeed(const DwgSections& sections, const DwgHeader& header,
                           std::uint64_t seed) {
    const std::string_view section = sections.header;
    const std::size_t sizeBytes = sections.hasHighSizes() ? 8 : 4;
    const std::size_t size = ByteReader(section.substr(kMarkBytes)).longWord();
    const std::string_view data = section.substr(kMarkBytes + sizeBytes, size);
    BitWriter handle;
    handle.handle(0, seed);
    const std::int64_t growth = static_cast<std::int64_t>(handle.size()) -
                                static_cast<std::int64_t>(header.seedEnd - header.seedBegin);
    BitWriter bits;
    const bool counted = sections.start.release >= Release::R2007;
    if (counted) {
        constexpr std::uint64_t kCountBits = 32;
        const std::uint32_t count = ByteReader(data).longWord();
        bits.longWord(static_cast<std::uint64_t>(count + growth));
        bits.copy(data, kCountBits, header.seedBegin);
    } else {
        bits.copy(data, 0, header.seedBegin);
    }
    bits.append(handle);
    bits.copy(data, header.seedEnd, data.size() * std::uint64_t{8});
    std::string summed;
    appendNumber(summed, bits.bytes().size(), sizeBytes);
    summed += bits.bytes();
    appendNumber(summed, crc16(kObjectSeed, summed), 2);
    return std::string(section.substr(0, kMarkBytes)) + summed +
           std::string(section.substr(kMarkBytes + sizeBytes + size + 2));
}

std::string auxiliaryWithSeed(std::string section, std::uint64_t old, std::uint64_t seed) {
    constexpr std::uint64_t kMost = 0x7FFFFFFE;
    const std::uint64_t written = seed > kMost ? std::numeric_limits<std::uint32_t>::max() : seed;
    for (const std::size_t at : kAuxiliarySeedAt) {
        if (at + 4 > section.size()) break;
        if (ByteReader(std::string_view(section).substr(at)).longWord() != old) continue;
        std::string bytes;
        appendNumber(bytes, written, 4);
        section.replace(at, 4, bytes);
        break;
    }
    return section;
}

void addBytes(SavePlan& plan, std::string_view bytes) {
    if (bytes.empty()) return;
    if (plan.pieces.empty() || plan.pieces.back().copy) plan.pieces.emplace_back();
    plan.pieces.back().bytes += bytes;
    plan.size += bytes.size();
}

void addCopy(SavePlan& plan, std::uint64_t from, std::uint64_t size) {
    if (size == 0) return;
    plan.size += size;
    if (!plan.pieces.empty() && plan.pieces.back().copy &&
        plan.pieces.back().from + plan.pieces.back().size == from) {
        plan.pieces.back().size += size;
        return;
    }
    plan.pieces.push_back({true, from, size, {}, 0});
}

}  // namespace mor::host
