#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mor::tool {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kReplacement = "\uFFFD";

/// A character of UTF-8 text.
struct Character {
    char32_t code = 0;
    std::size_t bytes = 1;
    bool valid = false;
};

/// The one at the beginning of a text that is not empty.
Character firstOf(std::string_view text) {
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    static constexpr std::array<char32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return {lead};
    char32_t code = lead & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return {lead};
        code = code << 6U | (byte(i) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < least[bytes] || code > 0x10FFFF || surrogate) return {lead};
    return {code, bytes, true};
}

bool isControl(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

/// Ends a line, turns the direction in which what follows is shown, or shows as nothing.
bool turns(char32_t code) {
    static constexpr std::pair<char32_t, char32_t> ranges[] = {
        {0x00AD, 0x00AD}, {0x061C, 0x061C}, {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x2069},
        {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xFFFE, 0xFFFF}, {0xE0000, 0xE0FFF}};
    return std::ranges::any_of(
        ranges, [code](const auto& range) { return code >= range.first && code <= range.second; });
}

/// How many characters at the beginning stand for themselves wherever they are shown.
std::size_t plainLength(std::string_view text) {
    const auto* const end = std::ranges::find_if(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte > 0x7E || byte == '<' || byte == '>' || byte == '&' ||
               byte == '"';
    });
    return static_cast<std::size_t>(end - text.begin());
}

void appendHex(std::string& result, unsigned value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        result += kHexDigits[(value >> static_cast<unsigned>(shift)) & 15U];
}

void appendShown(std::string& result, const Character& character, std::string_view bytes) {
    if (!character.valid) {
        result += "\\x";
        appendHex(result, static_cast<unsigned>(character.code), 2);
    } else if (character.code < 0x20 || character.code == 0x7F) {
        result.append({'^', static_cast<char>(character.code ^ 0x40U)});
    } else if (isControl(character.code) || turns(character.code)) {
        result += "\\U+";
        appendHex(result, static_cast<unsigned>(character.code), character.code > 0xFFFF ? 5 : 4);
    } else {
        result += bytes;
    }
}

void appendXml(std::string& result, const Character& character, std::string_view bytes) {
    const char32_t code = character.code;
    if (!character.valid || code == 0xFFFE || code == 0xFFFF)
        result += kReplacement;
    else if (isControl(code))
        result += ' ';
    else if (code == '&')
        result += "&amp;";
    else if (code == '<')
        result += "&lt;";
    else if (code == '>')
        result += "&gt;";
    else if (code == '"')
        result += "&quot;";
    else
        result += bytes;
}

template <typename Append>
void rewrite(std::string& result, std::string_view text, Append append) {
    while (true) {
        const std::size_t plain = plainLength(text);
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) return;
        const Character character = firstOf(text);
        append(result, character, text.substr(0, character.bytes));
        text.remove_prefix(character.bytes);
    }
}

}  // namespace

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string oneLine(std::string_view text) {
    std::string result;
    rewrite(result, text, appendShown);
    return result;
}

std::string xmlText(std::string_view text) {
    std::string result;
    addXmlText(result, text);
    return result;
}

void addXmlText(std::string& result, std::string_view text) { rewrite(result, text, appendXml); }

}  // namespace mor::tool
