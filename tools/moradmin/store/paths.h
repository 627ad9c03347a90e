#pragma once

#include "tools/moradmin/session.h"

#include <string>

namespace mor::tool {

/// What a path over the limit is told.
inline constexpr const char* kPathLimit = "a path has at most 1023 characters";

/// A word of the command line as a file path; refused (exit 6) with what a valid one looks like.
[[nodiscard]] std::wstring filePath(const Session& session, const std::string& word);
/// The same for a directory path. A "/" at the end is taken away.
[[nodiscard]] std::wstring directoryPath(const Session& session, const std::string& word);
/// The path of the directory that holds the last name, and that name.
[[nodiscard]] std::wstring parentOf(const std::wstring& path);
[[nodiscard]] std::wstring nameOf(const std::wstring& path);
[[nodiscard]] std::wstring joined(const std::wstring& directory, const std::wstring& name);

/// Whether a file stands there that can be read; false for a path that is none.
[[nodiscard]] bool isStoredFile(Session& session, const std::wstring& path);
[[nodiscard]] bool isStoredDirectory(Session& session, const std::wstring& path);

/// Refuses (exit 6) with a text about a path of the store.
[[noreturn]] void refuse(const Session& session, const std::wstring& path, const std::string& text);
/// Refuses with "not found", or says what stands there instead of a file.
[[noreturn]] void refuseMissing(Session& session, const std::wstring& path);

}  // namespace mor::tool
