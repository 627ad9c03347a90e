#include "host/text/escapes.h"

#include "host/text/iconv.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace mor::host {

namespace {

/// A double-byte character of `\M+nXXXX`; 0 when it is none.
wchar_t doubleByte(unsigned page, unsigned code) {
    static constexpr std::array<const char*, 6> pages = {"",      "CP932", "BIG5",
                                                         "CP949", "JOHAB", "GBK"};
    if (page < 1 || page > 5) return 0;
    const Iconv converter("WCHAR_T", pages[page]);
    if (!converter.valid()) return 0;
    const std::array<char, 2> bytes = {static_cast<char>(code >> 8),
                                       static_cast<char>(code & 0xFF)};
    std::string result;
    if (converter.convert({bytes.data(), 2}, result) != 2 || result.size() != sizeof(wchar_t))
        return 0;
    wchar_t character = 0;
    std::memcpy(&character, result.data(), sizeof character);
    return character;
}

void appendUnit(std::string& result, unsigned unit) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    result += "\\U+";
    for (unsigned shift = 16; shift > 0; shift -= 4) result += digits[(unit >> (shift - 4)) & 15U];
}

}  // namespace

std::optional<unsigned> hexDigits(std::wstring_view text, std::size_t at, std::size_t count) {
    if (text.size() < at + count) return std::nullopt;
    unsigned value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        const wchar_t c = text[i];
        unsigned digit = 16;
        if (c >= L'0' && c <= L'9') digit = static_cast<unsigned>(c - L'0');
        if (c >= L'A' && c <= L'F') digit = static_cast<unsigned>(c - L'A') + 10;
        if (c >= L'a' && c <= L'f') digit = static_cast<unsigned>(c - L'a') + 10;
        if (digit > 15) return std::nullopt;
        value = value * 16 + digit;
    }
    return value;
}

void appendUnicodeEscape(std::string& result, wchar_t character) {
    const auto code = static_cast<unsigned>(character);  // NOLINT(*-signed-char-misuse): no char
    if (code > 0xFFFF) {
        appendUnit(result, 0xD800 + ((code - 0x10000) >> 10U));
        appendUnit(result, 0xDC00 + ((code - 0x10000) & 0x3FFU));
    } else {
        appendUnit(result, code);
    }
}

/// What one escape at the beginning of `text` stands for, and how long it is; 0 for none.
static std::size_t takeEscape(std::wstring_view text, Carets carets, wchar_t& character) {
    if (text.starts_with(L"\\U+")) {
        const auto unit = hexDigits(text, 3, 4);
        character = static_cast<wchar_t>(unit.value_or(0));
        return unit ? 7 : 0;
    }
    if (text.starts_with(L"\\M+")) {
        const auto page = hexDigits(text, 3, 1);
        const auto code = hexDigits(text, 4, 4);
        character = page && code ? doubleByte(*page, *code) : L'\0';
        return character == L'\0' ? 0 : 8;
    }
    if (text.front() != L'^' || carets != Carets::Coded || text.size() < 2) return 0;
    const wchar_t next = text[1];
    character = next == L' ' ? L'^' : static_cast<wchar_t>(next - 0x40);
    return next == L' ' || (next >= L'@' && next <= L'_') ? 2 : 0;
}

void decodeEscapes(std::wstring_view text, Carets carets, std::wstring& units) {
    for (std::size_t at = 0; at < text.size();) {
        wchar_t character = text[at];
        const std::size_t size = takeEscape(text.substr(at), carets, character);
        units += size == 0 ? text[at] : character;
        at += std::max<std::size_t>(size, 1);
    }
}

void joinSurrogates(std::wstring& text) {
    std::size_t out = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto high = static_cast<unsigned>(text[i]);  // NOLINT(*-signed-char-misuse): no char
        const auto low = i + 1 < text.size() ? static_cast<unsigned>(text[i + 1]) : 0U;
        if (high >= 0xD800 && high <= 0xDBFF && low >= 0xDC00 && low <= 0xDFFF) {
            text[out++] = static_cast<wchar_t>(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
            ++i;
        } else {
            text[out++] = text[i];
        }
    }
    text.resize(out);
}

}  // namespace mor::host
