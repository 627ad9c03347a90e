#include "host/text/text_coding.h"

#include "host/text/ascii.h"
#include "host/text/escapes.h"
#include "host/text/iconv.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>

namespace mor::host {

namespace {

/// Undecodable byte b becomes kPrivate + b.
constexpr wchar_t kPrivate = 0xF700;

std::string iconvName(Release release, std::string_view codePage) {
    if (release >= Release::R2007) return "UTF-8";
    std::string name(codePage);
    std::ranges::transform(name, name.begin(), upperAscii);
    static const std::map<std::string, std::string> others = {
        {"ASCII", "CP1252"},    {"MAC-ROMAN", "MACINTOSH"}, {"BIG5", "BIG5"},
        {"KSC5601", "CP949"},   {"JOHAB", "JOHAB"},         {"GB2312", "GBK"},
        {"ANSI_1361", "JOHAB"}, {"ANSI_936", "GBK"}};
    if (const auto found = others.find(name); found != others.end()) return found->second;
    if (name.starts_with("ISO8859-")) return "ISO-8859-" + name.substr(8);
    for (const std::string_view prefix : {"ANSI_", "DOS"}) {
        if (!name.starts_with(prefix)) continue;
        const std::string digits = name.substr(prefix.size());
        if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) break;
        return "CP" + digits;
    }
    return "CP1252";
}

bool isAscii(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) <= 0x7F; });
}

}  // namespace

struct TextCoding::Converter {
    explicit Converter(std::string encoding)
        : name(std::move(encoding)),
          toWide("WCHAR_T", name.c_str()),
          fromWide(name.c_str(), "WCHAR_T") {}
    std::string name;
    Iconv toWide;
    Iconv fromWide;
};

TextCoding::TextCoding(Release release, std::string_view codePage, Carets carets)
    : m_asked(iconvName(release, codePage)), m_carets(carets) {}
TextCoding::~TextCoding() = default;
TextCoding::TextCoding(TextCoding&&) noexcept = default;
TextCoding& TextCoding::operator=(TextCoding&&) noexcept = default;

/// Not every encoding that a file names is one that the C library has.
const std::string& TextCoding::name() const {
    const bool sure = m_asked == "UTF-8" || m_asked == "CP1252";
    return sure ? m_asked : converter().name;
}

const TextCoding::Converter& TextCoding::converter() const {
    if (m_converter) return *m_converter;
    m_converter = std::make_unique<Converter>(m_asked);
    if (!m_converter->toWide.valid() || !m_converter->fromWide.valid())
        m_converter = std::make_unique<Converter>("CP1252");
    return *m_converter;
}

void TextCoding::decodeBehind(std::wstring& text, std::string_view bytes) const {
    if (isAscii(bytes) && bytes.find_first_of("\\^") == std::string_view::npos)
        text.append(bytes.begin(), bytes.end());
    else
        text += decode(bytes);
}

std::wstring TextCoding::decode(std::string_view bytes) const {
    std::wstring characters;
    if (isAscii(bytes)) {
        characters.assign(bytes.begin(), bytes.end());
    } else {
        while (!bytes.empty()) {
            std::string wide;
            const std::size_t used = converter().toWide.convert(bytes, wide);
            const std::size_t old = characters.size();
            characters.resize(old + wide.size() / sizeof(wchar_t));
            std::memcpy(characters.data() + old, wide.data(), wide.size());
            bytes.remove_prefix(used);
            if (bytes.empty()) break;
            characters +=
                static_cast<wchar_t>(kPrivate + static_cast<unsigned char>(bytes.front()));
            bytes.remove_prefix(1);
        }
    }
    if (characters.find_first_of(L"\\^") == std::wstring::npos) return characters;
    std::wstring result;
    decodeEscapes(characters, m_carets, result);
    joinSurrogates(result);
    return result;
}

std::string TextCoding::encode(std::wstring_view text) const {
    std::string result;
    for (const wchar_t c : text) {
        const auto code = static_cast<unsigned>(c);  // NOLINT(bugprone-signed-char-misuse): no char
        const bool coded = m_carets == Carets::Coded || code == 0;  // NUL ends a binary text
        if (code < 0x20 && coded) {
            result += '^';
            result += static_cast<char>(code + 0x40);
        } else if (c == L'^' && coded) {
            result += "^ ";
        } else if (code < 0x7F) {
            result += static_cast<char>(code);
        } else if (code >= static_cast<unsigned>(kPrivate) + 0x80 &&
                   code <= static_cast<unsigned>(kPrivate) + 0xFF) {
            result += static_cast<char>(code - static_cast<unsigned>(kPrivate));
        } else {
            std::string bytes;
            const std::string_view one(reinterpret_cast<const char*>(&c), sizeof c);
            if (converter().fromWide.convert(one, bytes) == sizeof c && !bytes.empty()) {
                result += bytes;
            } else {
                appendUnicodeEscape(result, c);
            }
        }
    }
    return result;
}

}  // namespace mor::host
