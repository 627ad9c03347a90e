#pragma once

#include "dwgfs/path_rules.h"

#include <optional>
#include <string>
#include <string_view>

namespace mor {

/// The name of the attribute that links a parent to its directory `name`: the root link for "/",
/// else "^" and the name without a first ">". False, and `link` unchanged, when it does not fit.
[[nodiscard]] bool makeLinkName(NameBuffer& link, std::wstring_view name);

/// The same as a text of any length.
[[nodiscard]] std::wstring linkNameOf(std::wstring_view name);

/// The directory name in a link name, "/" for the root link; nothing for any other attribute. A
/// part of the text given, or static.
[[nodiscard]] std::optional<std::wstring_view> dirNameOfLink(std::wstring_view link);

}  // namespace mor
