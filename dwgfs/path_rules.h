#pragma once

#include "platform/bounded_text.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace mor {

// In characters, without the terminator.
inline constexpr std::size_t kMaxPathLength = 1023;
inline constexpr std::size_t kMaxDirNameLength = 126;  ///< its link name has one character more
inline constexpr std::size_t kMaxFileNameLength = 127;
inline constexpr std::size_t kMaxAttributeText = 2047;

using PathBuffer = BoundedText<kMaxPathLength + 1>;
using NameBuffer = BoundedText<kMaxFileNameLength + 1>;
using AttributeBuffer = BoundedText<kMaxAttributeText + 1>;

/// The text, when there is one of at most `limit` characters. Reads no further than that.
[[nodiscard]] std::optional<std::wstring_view> measured(const wchar_t* text, std::size_t limit);

/// Whether a path begins with "/" and a name, or is "/" alone: what can be split into names.
[[nodiscard]] bool isRooted(std::wstring_view path);

/// An operation's own copy of a caller's path; false for no text, for one over 1023 characters and
/// for one that is not rooted.
[[nodiscard]] bool copyPath(const wchar_t* path, PathBuffer& copy);

/// A letter or digit, then letters, digits, blanks, "-" and "_", with at least one letter.
[[nodiscard]] bool isDirName(std::wstring_view name);
/// A directory name, or one behind a single ">".
[[nodiscard]] bool isFileName(std::wstring_view name);
/// What may begin a file name and no directory name. A directory x hides the files x and >x.
inline constexpr wchar_t kFileArrow = L'>';
/// A name without a first ">": that of the directory that would hide such a file. A part of it.
[[nodiscard]] std::wstring_view withoutArrow(std::wstring_view name);
/// "/", or directory names each behind a "/".
[[nodiscard]] bool isDirPath(std::wstring_view path);
/// A directory path other than "/", then "/" and a file name: no file lies in the root.
[[nodiscard]] bool isFilePath(std::wstring_view path);

/// The path without its last name: "/" for "/a". `path` begins with "/" and is not "/".
[[nodiscard]] std::wstring_view parentPath(std::wstring_view path);

/// While it lives, the path of a directory goes on with "/" (unless it is "/") and the name of an
/// entry. `path` is a buffer for 1023 characters, and unchanged when they do not suffice.
class ExtendedPath {
public:
    ExtendedPath(wchar_t* path, std::wstring_view name);
    ~ExtendedPath() { *m_end = L'\0'; }
    ExtendedPath(const ExtendedPath&) = delete;
    ExtendedPath& operator=(const ExtendedPath&) = delete;

    [[nodiscard]] bool fits() const noexcept { return m_fits; }

private:
    wchar_t* m_end;
    bool m_fits = false;
};

}  // namespace mor
