#pragma once

#include <optional>
#include <string>
#include <string_view>

/// `\U+XXXX`, `\M+nXXXX` and caret coding in texts of drawings.
namespace mor::host {

/// The value of so many hexadecimal digits that stand at `at`; nothing when they do not.
[[nodiscard]] std::optional<unsigned> hexDigits(std::wstring_view text, std::size_t at,
                                                std::size_t count);

/// A character as `\U+XXXX` with upper-case digits, beyond FFFF as two of them.
void appendUnicodeEscape(std::string& result, wchar_t character);

/// Whether `^J` in a text is a line feed; in the binary form control characters stand for
/// themselves.
enum class Carets { Coded, Plain };

/// Decodes escapes and caret coding in text that is characters otherwise; appends UTF-16 units as
/// they stand, so that a pair split over two texts can be joined by `joinSurrogates`.
void decodeEscapes(std::wstring_view text, Carets carets, std::wstring& units);
/// Makes one character of each surrogate pair, in place. A lone surrogate stays.
void joinSurrogates(std::wstring& text);

}  // namespace mor::host
