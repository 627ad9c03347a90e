#pragma once

#include "host/large_memory.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace mor::host {

class DwgFile;

/// Flags of a note.
enum Noted : std::uint8_t {
    kEntity = 1,
    kDamaged = 2,
    kOwning = 4,    ///< other entities belong to it
    kExtending = 8  ///< has extended data
};

/// What is seen of an object when its sum is tested, before it has its number.
struct ObjectNote {
    std::uint16_t type = 0;
    std::uint8_t flags = 0;
};

/// All objects of a file, by their places in the object map.
struct ObjectNotes {
    struct Wrong {
        std::size_t object = 0;
        const char* why = nullptr;
    };
    LargeVector<ObjectNote> objects;
    /// The handle behind it in its list, of entities that are not damaged; only up to R2000.
    LargeVector<std::uint64_t> next;
    std::vector<Wrong> wrong;     ///< the damaged ones, in order
    std::uint64_t deadBytes = 0;  ///< among the objects, of older versions of them
};

/// Tests every object; another thread helps where they are many. The caller does `meanwhile` while
/// that thread begins; it must leave what objects are made of alone.
[[nodiscard]] ObjectNotes noteObjects(const DwgFile& file, std::function<void()> meanwhile);

}  // namespace mor::host
