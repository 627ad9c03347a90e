#pragma once

#include "tools/moradmin/session.h"

#include <string>
#include <vector>

namespace mor::tool {

/// Whether a word of the command line has a character that makes it a pattern.
[[nodiscard]] bool isPathPattern(const std::string& word);
/// Refuses (exit 6) a pattern that cannot match anything because it is no pattern: one that does
/// not begin with /, is too long, or has a bracket that is not closed.
void refuseBadPattern(const Session& session, const std::string& word);

/// What stands under a path.
struct Match {
    std::wstring path;
    bool directory = false;
};
/// The files and directories whose paths match a pattern, part by part as the library matches them;
/// the part ** matches any number of directories. In stored order, a directory before what it
/// holds.
[[nodiscard]] std::vector<Match> pathsMatching(Session& session, const std::wstring& pattern);

/// A word as paths: itself, or what matches it; refuses (exit 6) a pattern that matches nothing.
[[nodiscard]] std::vector<Match> pathsMeant(Session& session, const std::string& word);

}  // namespace mor::tool
