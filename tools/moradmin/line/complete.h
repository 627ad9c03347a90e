#pragma once

#include "tools/moradmin/session.h"

#include <functional>
#include <string>
#include <vector>

namespace mor::tool {

/// What the last of the words behind `moradmin` may be meant as; `files`: names of files too.
struct Completions {
    std::vector<std::string> words;
    bool files = false;
};

/// `open` gives the session of the drawing that the words name, null for none; it is asked for only
/// when names of the drawing are wanted. `inShell`: the words name no drawing, and paths begin
/// without / below `directory`.
[[nodiscard]] Completions completionsFor(
    const std::vector<std::string>& words,
    const std::function<Session*(const std::string& drawing)>& open, bool inShell = false,
    const std::wstring& directory = L"/");

}  // namespace mor::tool
