#pragma once

#include "platform/lisp.h"

#include <string>

namespace mor::tool {

/// How a value lies in a file of its own: a string as its text in NAME.txt, all else, and strings
/// that are no UTF-8, as LISP text in NAME.lisp. A name's ">" is written %3E.
struct ValueFile {
    std::string name;
    std::string bytes;
};
[[nodiscard]] ValueFile valueFile(const std::wstring& name, const CMORAdsLispVar& value);

/// The name and value that a file holds. Throws Failure for one that holds none.
struct NamedValue {
    std::wstring name;
    CMORAdsLispVar value;
};
[[nodiscard]] NamedValue valueFromFile(const std::string& path);

}  // namespace mor::tool
