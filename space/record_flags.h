#pragma once

/// Groups of the records of symbol tables, and what their flags say.
namespace mor {

inline constexpr int kGroupName = 2;
inline constexpr int kGroupFlags = 70;
inline constexpr int kGroupFirstEntity = -2;  ///< of a block, in what a look-up gives

// Flags of a block.
inline constexpr int kBlockAnonymous = 1;
inline constexpr int kBlockAttributes = 2;  ///< it has attribute definitions
inline constexpr int kBlockReference = 4;   ///< an external reference
inline constexpr int kBlockOverlay = 8;     ///< one that goes no further than this drawing
inline constexpr int kBlockDependent = 16;  ///< of a reference
inline constexpr int kBlockResolved = 32;   ///< a reference that was loaded when it was saved

// Flags of a layer.
inline constexpr int kLayerFrozen = 1;
inline constexpr int kLayerLocked = 4;

}  // namespace mor
