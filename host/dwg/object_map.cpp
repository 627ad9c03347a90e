#include "host/dwg/object_map.h"

#include "host/dwg/bits.h"
#include "host/dwg/checksums.h"

#include <algorithm>

namespace mor::host {

namespace {

constexpr std::uint16_t kEmptyChunk = 2;
constexpr std::uint16_t kLargestChunk = 0x8000;
constexpr std::uint64_t kFewestObjectBytes = 4;
constexpr std::size_t kFewestPairBytes = 2;

}  // namespace

std::string ObjectMap::read(const DwgSections& sections, DamageNotes& damage) {
    const std::string_view map = sections.map;
    const std::uint64_t objectBytes = sections.objects.size();
    ByteReader reader(map);
    m_entries.reserve(
        std::min(map.size() / kFewestPairBytes, sections.objects.size() / kFewestObjectBytes));
    while (true) {
        const std::size_t begin = reader.position();
        const std::uint16_t size = reader.wordHighFirst();
        if (reader.failed() || size < kEmptyChunk || size > kLargestChunk)
            return "its object map breaks off";
        ByteReader pairs(reader.bytes(size - std::size_t{2}));
        const std::uint16_t sum = reader.wordHighFirst();
        if (reader.failed()) return "its object map breaks off";
        if (!sumsAgree(crc16(kObjectSeed, map.substr(begin, size)), sum))
            return "the checksum of its object map is wrong";
        if (size == kEmptyChunk) break;
        MapEntry entry;
        std::int64_t place = 0;
        while (pairs.remaining() > 0) {
            entry.handle += pairs.unsignedModularChar();
            place += pairs.modularChar();
            if (pairs.failed()) return "its object map is damaged";
            entry.place = static_cast<std::uint64_t>(place);
            const bool rises = m_entries.empty() || entry.handle > m_entries.back().handle;
            if (entry.handle == 0 || !rises || place < 0 || entry.place >= objectBytes)
                damage.note(
                    "the object map has a wrong entry for handle " + std::to_string(entry.handle),
                    begin);
            else
                m_entries.push_back(entry);
            if (m_entries.size() > objectBytes / kFewestObjectBytes)
                return "its object map has more objects than fit";
        }
    }
    return {};
}

const MapEntry* ObjectMap::find(std::uint64_t handle) const {
    const auto found = std::ranges::lower_bound(m_entries, handle, {}, &MapEntry::handle);
    return found == m_entries.end() || found->handle != handle ? nullptr : &*found;
}

}  // namespace mor::host
