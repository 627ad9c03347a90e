#pragma once

#include "platform/types.h"

/// The record of the block in the current drawing's block table, null when there is none. The
/// caller releases the list.
[[nodiscard]] resbuf* TblBlockSearch(const wchar_t* name);
