#pragma once

#include "platform/types.h"

/// The record of `symbol` in the symbol table `table` (LAYER LTYPE VIEW STYLE BLOCK UCS DIMSTYLE
/// VPORT APPID, without regard to case) of the current drawing, as a list that the caller releases;
/// null when there is none. "BLOCK" gives 0, 2, 70, 10, -2, for references also 1; -2 is left out
/// for a block without entities. A non-zero `setNext` lets the next `acdbTblNext` of that table go
/// on behind the record.
[[nodiscard]] resbuf* acdbTblSearch(const wchar_t* table, const wchar_t* symbol, int setNext);

/// The next record of the table in table order, null at the end; a non-zero `rewind` starts over.
/// The caller releases it. The blocks that stand for model space and the layouts are not walked,
/// nor are records of referenced drawings that the drawing itself does not hold.
[[nodiscard]] resbuf* acdbTblNext(const wchar_t* table, int rewind);
