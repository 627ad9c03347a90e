#pragma once

#include "platform/lisp.h"
#include "platform/string_list.h"

/// Layer patterns of an external reference are written without its name; here they get it.
namespace mor {

/// Fills `result` with the qualified patterns, NAME|PATTERN; just "*" when that is among them,
/// which also reaches layers without the reference's name. False for an empty list. The name is not
/// escaped. A qualified pattern of more than 2047 characters is left out: it matches nothing.
[[nodiscard]] bool qualifyLayers(const CMORStringList& patterns, const wchar_t* xrefName,
                                 CMORStringList& result);
/// The same for a LISP list of strings, as a list in any order; nil when the value is no proper
/// list or an element is no string, which prints "Layername expected: " with the element.
[[nodiscard]] CMORAdsLispVar qualifyLayers(const CMORAdsLispVar& patterns, const wchar_t* xrefName);

}  // namespace mor
