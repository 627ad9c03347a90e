#include "xref/block_search.h"

#include "platform/table_calls.h"

resbuf* TblBlockSearch(const wchar_t* name) {
    return name == nullptr ? nullptr : acdbTblSearch(L"BLOCK", name, 0);
}
