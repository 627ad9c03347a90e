#pragma once

#include "platform/types.h"

#include <cstddef>

/// A new list from pairs of a type or DXF group code and a value, ended by 0; in the order given,
/// null when the first type is 0 or memory is short. The caller owns it (`acutRelRb`). Values by
/// code: text as `const wchar_t*` (copied), reals as double, 16-bit and 32-bit integers as int,
/// points as `const double*` to three coordinates, names as `const ads_name`. Codes 10-18, 110-112,
/// 210-213 and 1010-1013 and RTPOINT are points; -1, -2, 330-369 and RTENAME names; RTLB, RTLE,
/// RTDOTE, RTNIL and RTT take no value.
[[nodiscard]] resbuf* acutBuildList(int type, ...);

/// A new single element of type `type` with an empty value; null when memory is short. The caller
/// owns it.
[[nodiscard]] resbuf* acutNewRb(int type);

/// Memory for the text of an element, released by `acutRelRb` with the list; null when memory is
/// short. `size` counts bytes.
[[nodiscard]] void* acad_malloc(std::size_t size);

/// Releases a whole list with its texts; null is allowed. Answers RTNORM.
int acutRelRb(resbuf* list);
