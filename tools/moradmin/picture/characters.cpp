#include "tools/moradmin/picture/characters.h"

namespace mor::tool {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isCharacter(char32_t c) { return c < 0xD800 || (c > 0xDFFF && c < 0x110000); }

}  // namespace

std::u32string characters(std::string_view text) {
    std::u32string all;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (lead >= 0x80 && (lead < 0xC0 || i + length > text.size())) {
            all += kReplacement;
            ++i;
            continue;
        }
        char32_t c = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t k = 1; k < length; ++k)
            c = (c << 6U) | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        all += c;
        i += length;
    }
    return all;
}

std::string utf8Of(std::u32string_view text) {
    std::string all;
    for (const char32_t any : text) {
        const char32_t c = isCharacter(any) ? any : kReplacement;
        const unsigned more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr unsigned kLeads[] = {0, 0xC0, 0xE0, 0xF0};
        all += static_cast<char>(kLeads[more] | (c >> (6 * more)));
        for (unsigned left = more; left > 0; --left)
            all += static_cast<char>(0x80U | ((c >> (6 * (left - 1))) & 0x3FU));
    }
    return all;
}

}  // namespace mor::tool
