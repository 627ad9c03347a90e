#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Texts come from drawings, and drawings from anybody. Nothing of them is to move the cursor of a
// terminal, to break a line in two, or a picture.

namespace mor::tool {

/// A text on one line for people: control characters are written as ^J and the like, those beyond
/// ASCII and what turns lines or directions of writing as \U+2028, bytes that are no UTF-8 as \xFF.
[[nodiscard]] std::string oneLine(std::string_view text);

/// A text within the tags of a picture: escaped, blanks in place of control characters, U+FFFD in
/// place of what XML has no place for.
[[nodiscard]] std::string xmlText(std::string_view text);
/// Puts it behind what stands there.
void addXmlText(std::string& result, std::string_view text);

/// How many characters a text of UTF-8 has; about as many columns of a terminal.
[[nodiscard]] std::size_t characterCount(std::string_view text);

}  // namespace mor::tool
