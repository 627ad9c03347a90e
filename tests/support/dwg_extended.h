#pragma once

#include "tests/support/dwg_bits.h"
#include "tests/support/dxf_records.h"

#include <cstdint>
#include <cstdlib>

/// Extended data of DXF records as DWG files have them.
namespace mor::test {

/// One item of extended data.
inline void addDwgItem(DwgBits& items, const DxfTag& tag) {
    items.byte(static_cast<unsigned>(tag.code - 1000));
    const char* text = tag.value.c_str();
    if (tag.code == 1000) {
        items.byte(tag.value.size()).byte(0).byte(30);
        for (const char c : tag.value) items.byte(static_cast<unsigned char>(c));
    } else if (tag.code == 1002) {
        items.byte(withoutBlanks(tag.value) == "{" ? 0 : 1);
    } else if (tag.code == 1005) {
        items.bits(handleNumber(tag.value), 64);
    } else if (tag.code == 1040) {
        items.real(std::strtod(text, nullptr));
    } else {
        items.number(static_cast<std::uint64_t>(std::atoll(text)), tag.code == 1070 ? 2 : 4);
    }
}

/// The lists of extended data of a record: applications, by `handleOf` their name, with their
/// items.
template <typename HandleOf>
[[nodiscard]] DwgBits dwgExtendedData(const DxfRecord& record, const HandleOf& handleOf) {
    DwgBits lists;
    std::uint64_t application = 0;
    DwgBits items;
    const auto close = [&] {
        if (items.size() == 0) return;
        lists.bitShort(static_cast<int>(items.size() / 8)).handle(5, application).add(items);
        items = DwgBits();
    };
    for (const DxfTag& tag : record.tags) {
        if (tag.code == 1001) {
            close();
            application = handleOf(tag.value);
        }
        if (tag.code > 1001 || tag.code == 1000) addDwgItem(items, tag);
    }
    close();
    return lists.bitShort(0);
}

}  // namespace mor::test
