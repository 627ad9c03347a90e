#pragma once

#include <cstdint>

/// What the groups of a record mean by their codes.
namespace mor::host {

/// How the value of a group is written.
enum class CodeKind : std::uint8_t {
    Text,
    Handle,  ///< text of hexadecimal digits
    Real,
    Point,      ///< the first real of a point; the others have codes 10 and 20 higher
    Integer16,  ///< signed
    Integer32,
    Integer64,
    Flag,   ///< 0 or 1
    Chunk,  ///< bytes
    Unknown
};

[[nodiscard]] CodeKind codeKind(int code) noexcept;

[[nodiscard]] constexpr bool isInteger(CodeKind kind) noexcept {
    return kind >= CodeKind::Integer16 && kind <= CodeKind::Flag;
}
[[nodiscard]] constexpr bool isReal(CodeKind kind) noexcept {
    return kind == CodeKind::Real || kind == CodeKind::Point;
}

// Codes that mean the same in every record.
inline constexpr int kTypeCode = 0;
inline constexpr int kNameCode = 2;
inline constexpr int kHandleCode = 5;
inline constexpr int kDimensionStyleHandleCode = 105;  ///< of DIMSTYLE records
inline constexpr int kLayerCode = 8;
inline constexpr int kSpaceCode = 67;
inline constexpr int kFlagsCode = 70;
inline constexpr int kMarkerCode = 100;
inline constexpr int kBracketCode = 102;  ///< "{..." opens groups that belong together, "}" closes
inline constexpr int kOwnerCode = 330;
inline constexpr int kCommentCode = 999;
inline constexpr int kApplicationCode = 1001;  ///< the first one begins the extended data

/// Group 70 of a BLOCK.
enum BlockFlag : std::int64_t {
    kAnonymousBlock = 1,
    kBlockWithAttributes = 2,
    kReferenceBlock = 4,
    kOverlayBlock = 8,  ///< some writers leave 4 out beside it
    kDependentBlock = 16,
    kResolvedBlock = 32
};
/// An external reference, attached or overlaid.
inline constexpr std::int64_t kAnyReferenceBlock = kReferenceBlock | kOverlayBlock;

/// Group 70 of a LAYER.
enum LayerFlag : std::int64_t { kFrozenLayer = 1, kLockedLayer = 4 };

/// Bytes that the platform counts for one group of extended data whose text has so many bytes.
[[nodiscard]] long extendedCost(int code, std::size_t textBytes) noexcept;

}  // namespace mor::host
