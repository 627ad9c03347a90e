#pragma once

#include "tests/support/dwg_bits.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Files of DWG R2000 around objects that are made already.
namespace mor::test {

/// A DWG file, and where its parts lie.
struct DwgFileBytes {
    std::string bytes;
    std::map<std::uint64_t, std::size_t> places;  ///< of the objects, by handle
    std::size_t map = 0;                          ///< where the object map begins
};

/// Objects by handle, sealed, in the order in which they lie in the file.
using DwgObjects = std::vector<std::pair<std::uint64_t, std::string>>;

/// Data between a mark and its opposite, with size and sum.
[[nodiscard]] inline std::string dwgMarked(std::string_view mark, const std::string& data) {
    std::string end(mark);
    for (char& c : end) c = static_cast<char>(~static_cast<unsigned char>(c));
    return std::string(mark) + dwgSealed(DwgBits().number(data.size(), 4).bytes() + data) + end;
}
[[nodiscard]] inline std::string dwgChunk(const std::string& pairs) {
    const std::string bytes = DwgBits().bits(pairs.size() + 2, 16).bytes() + pairs;
    return bytes + DwgBits().bits(dwgSum(bytes), 16).bytes();
}

[[nodiscard]] inline std::string dwgObjectMap(const std::map<std::uint64_t, std::size_t>& places) {
    std::string pairs;
    std::uint64_t handle = 0;
    std::int64_t place = 0;
    for (const auto& [next, at] : places) {
        for (std::uint64_t step = next - handle; true; step >>= 7U) {
            pairs += static_cast<char>((step & 0x7FU) | (step > 0x7F ? 0x80U : 0U));
            if (step <= 0x7F) break;
        }
        const std::int64_t step = static_cast<std::int64_t>(at) - place;
        auto rest = static_cast<std::uint64_t>(std::llabs(step));
        for (; rest > 0x3F; rest >>= 7U) pairs += static_cast<char>((rest & 0x7FU) | 0x80U);
        pairs += static_cast<char>(rest | (step < 0 ? 0x40U : 0U));
        handle = next;
        place = static_cast<std::int64_t>(at);
    }
    return dwgChunk(pairs) + dwgChunk("");
}
/// All header variables 0 but for $HANDSEED, the control objects of the tables, the dictionary, and
/// the last handles: both spaces and three line types.
[[nodiscard]] inline std::string dwgHeaderVariables(std::uint64_t seed,
                                                    const std::vector<std::uint64_t>& tables,
                                                    std::uint64_t dictionary,
                                                    const std::vector<std::uint64_t>& last) {
    DwgBits bits;
    const auto zeros = [&bits](std::string_view kinds) {
        for (std::size_t i = 0; i < kinds.size(); i += 3)
            bits.zeros(kinds[i], (kinds[i + 1] - '0') * 10 + kinds[i + 2] - '0');
    };
    zeros("d04t04l02h01b20s27d21t01l08s01");
    bits.handle(0, seed);
    zeros("h05d01303202d01303h02s01h01306303202d01303h02s01h01306");
    zeros("t02d09b06s03d08d01b01s01b04s03s11b02s04b01s01h05s02");
    for (const std::uint64_t table : tables) bits.handle(3, table);
    zeros("h03");
    bits.handle(3, dictionary);
    zeros("s02t02h03l01s02t02");
    for (const std::uint64_t handle : last) bits.handle(5, handle);
    return bits.bytes();
}

/// A whole file of these objects, in their order.
[[nodiscard]] inline DwgFileBytes dwgFile(const DwgObjects& objectList,
                                          const std::string& variables) {
    constexpr std::string_view headerMark(
        "\xCF\x7B\x1F\x23\xFD\xDE\x38\xA9\x5F\x7C\x68\xB8\x4E\x6D\x33\x5F", 16);
    constexpr std::string_view classMark(
        "\x8D\xA1\xC4\xB8\xC4\xA9\xF8\xC5\xC0\xDC\xF4\x5F\xE7\xCF\xB6\x8A", 16);
    constexpr std::string_view endMark(
        "\x95\xA0\x4E\x28\x99\x82\x1A\xE5\x5E\x41\xE0\x5F\x9D\x3A\x4D\x00", 16);
    constexpr std::size_t kHead = 0x100;
    const std::string header = dwgMarked(headerMark, variables);
    const std::string classes = dwgMarked(classMark, "");
    DwgFileBytes file;
    std::string objects;
    for (const auto& [handle, bytes] : objectList) {
        file.places[handle] = kHead + header.size() + classes.size() + objects.size();
        objects += bytes;
    }
    const std::string map = dwgObjectMap(file.places);
    file.map = kHead + header.size() + classes.size() + objects.size();
    DwgBits head;
    for (const char c : std::string_view("AC1015")) head.byte(static_cast<unsigned char>(c));
    head.number(0, 6).byte(1).number(0, 4).byte(23).byte(0).number(30, 2).number(5, 4);
    const std::size_t addresses[] = {kHead, kHead + header.size(), file.map, 0,
                                     file.map + map.size()};
    const std::size_t sizes[] = {header.size(), classes.size(), map.size(), 0, 4};
    for (unsigned i = 0; i < 5; ++i) head.byte(i).number(addresses[i], 4).number(sizes[i], 4);
    std::string start = head.bytes();
    start += DwgBits().number(dwgSum(start, 0) ^ 0x3CC4U, 2).bytes();
    start += endMark;
    start.resize(kHead);
    file.bytes = start + header + classes + objects + map + std::string(4, '\0');
    return file;
}

}  // namespace mor::test
