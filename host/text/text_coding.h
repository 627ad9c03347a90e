#pragma once

#include "host/host.h"
#include "host/text/escapes.h"

#include <memory>
#include <string>
#include <string_view>

namespace mor::host {

/// Turns the texts of one drawing into characters and back. Bytes become characters first; then, in
/// one pass,
/// `\U+XXXX` (in every release), `\M+nXXXX` and, in text files, the caret coding of control
/// characters.
/// Bytes that the encoding lacks become private code points which encode back to the same bytes.
class TextCoding {
public:
    /// The encoding of a file: UTF-8 from R2007 on, else the code page. An unknown name counts as
    /// ANSI_1252.
    TextCoding(Release release, std::string_view codePage, Carets carets);
    ~TextCoding();
    TextCoding(TextCoding&& other) noexcept;
    TextCoding& operator=(TextCoding&& other) noexcept;

    [[nodiscard]] std::wstring decode(std::string_view bytes) const;
    /// The same, behind a text that is there.
    void decodeBehind(std::wstring& text, std::string_view bytes) const;
    /// A character that the code page lacks is written as `\U+XXXX`, control characters in caret
    /// coding.
    [[nodiscard]] std::string encode(std::wstring_view text) const;
    /// The encoding's name as iconv knows it.
    [[nodiscard]] const std::string& name() const;

private:
    struct Converter;
    [[nodiscard]] const Converter& converter() const;

    std::string m_asked;  ///< the encoding that the file names
    /// Made when a text is met that is not ASCII: the C library loads a table for most encodings.
    mutable std::unique_ptr<Converter> m_converter;
    Carets m_carets;
};

}  // namespace mor::host
