#pragma once

#include "host/documents.h"
#include "host/dwg/fields.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// Numbers of types that are the same in every drawing; those of classes begin at 500.
enum DwgType : std::uint16_t {
    kDwgText = 1,
    kDwgAttrib = 2,
    kDwgAttdef = 3,
    kDwgBlock = 4,
    kDwgEndBlock = 5,
    kDwgSequenceEnd = 6,
    kDwgInsert = 7,
    kDwgManyInsert = 8,
    kDwgVertex2D = 10,
    kDwgVertexFace = 14,
    kDwgPolyline2D = 15,
    kDwgPolyline3D = 16,
    kDwgPolyfaceMesh = 29,
    kDwgPolygonMesh = 30,
    kDwgDictionary = 42,
    kDwgBlockControl = 48,
    kDwgBlockHeader = 49,
    kDwgLineTypeControl = 56,
    kDwgViewportControl = 70,
    kDwgViewportHeader = 71,
    kDwgProxyEntity = 498,
    kDwgProxyObject = 499,
    kDwgFirstClass = 500
};

/// Whether types of that number are entities. Classes say so themselves.
[[nodiscard]] bool isEntityType(std::uint16_t type);

/// One object without its own data: what it is, and where its parts begin. Positions count in bits
/// from the first one of `bytes`.
struct ObjectFrame {
    std::string_view bytes;  ///< without its size and sum
    std::string_view whole;  ///< with them
    std::uint16_t type = 0;
    std::uint64_t handle = 0;
    bool entity = false;
    std::uint64_t extendedBegin = 0;
    std::uint64_t extendedEnd = 0;  ///< behind the 0 that ends the extended data
    std::uint64_t graphicsBegin = 0;
    std::uint64_t graphicsBytes = 0;
    std::uint64_t body = 0;       ///< where the data that all entities or objects have begin
    std::uint64_t handles = 0;    ///< where its handles begin
    const char* wrong = nullptr;  ///< why it is damaged; then what lies behind is not known

    [[nodiscard]] std::uint64_t end() const { return bytes.size() * std::uint64_t{8}; }
    /// Its data from `body` on.
    [[nodiscard]] Fields fields(Release release) const {
        return {release, bytes, body, handles, end()};
    }
};

/// Reads the frame of the object at `place`; `entityClasses` by class number, from 500 on. The sum
/// is tested when `testSum`.
[[nodiscard]] ObjectFrame frameAt(std::string_view objects, std::uint64_t place, Release release,
                                  const std::vector<bool>& entityClasses, bool testSum);

}  // namespace mor::host
