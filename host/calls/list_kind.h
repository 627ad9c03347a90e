#pragma once

namespace mor::host {

/// Which member of a list element's value counts.
enum class ListKind { None, Text, Real, Point, Short, Long, Name, Unknown };

/// The kind of a result type or DXF group code in program lists: a point there is one element (code
/// 10), and 330-369 are entity names. Unknown for codes that no list may hold.
[[nodiscard]] ListKind listKind(int type) noexcept;

}  // namespace mor::host
