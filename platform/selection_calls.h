#pragma once

#include "platform/types.h"

#include <cstdint>

/// Selects entities of the current drawing: mode "X" or "_X" looks at model space and every layout,
/// whatever their layers' state, not at block definitions and sub-entities. All groups of `filter`
/// must hold; texts of types and symbols are wildcard patterns without regard to case; no filter
/// selects all. RTNORM and a set that the caller frees when something matches, else RTERROR and no
/// set. At most 128 sets are open at once. `first` and `second` are null.
int acedSSGet(const wchar_t* mode, const void* first, const void* second, const resbuf* filter,
              ads_name result);

/// The number of entities in the set; RTERROR for a freed or unknown set.
int acedSSLength(const ads_name set, std::int32_t* count);

/// The name at `index`, from 0; RTERROR outside the set. Entities erased since stay in it.
int acedSSName(const ads_name set, std::int32_t index, ads_name result);

/// Releases the set.
int acedSSFree(const ads_name set);
