#include "host/text/dxf_text.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iconv.h>
#include <map>
#include <optional>
#include <utility>

namespace mor::host {

namespace {

/// Undecodable byte b becomes kPrivate + b.
constexpr wchar_t kPrivate = 0xF700;

std::string lowerAscii(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return result;
}

std::string iconvName(Release release, std::string_view codePage) {
    if (release >= Release::R2007) return "UTF-8";
    const std::string name = lowerAscii(codePage);
    static const std::map<std::string, std::string> others = {
        {"ascii", "CP1252"},    {"mac-roman", "MACINTOSH"}, {"big5", "BIG5"},
        {"ksc5601", "CP949"},   {"johab", "JOHAB"},         {"gb2312", "GBK"},
        {"ansi_1361", "JOHAB"}, {"ansi_936", "GBK"}};
    if (const auto found = others.find(name); found != others.end()) return found->second;
    if (name.starts_with("iso8859-")) return "ISO-8859-" + name.substr(8);
    for (const std::string_view prefix : {"ansi_", "dos"}) {
        if (!name.starts_with(prefix)) continue;
        const std::string digits = name.substr(prefix.size());
        if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) break;
        return "CP" + digits;
    }
    return "CP1252";
}

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

class Iconv {
public:
    Iconv(const char* to, const char* from) : m_handle(::iconv_open(to, from)) {}
    ~Iconv() {
        if (valid()) ::iconv_close(m_handle);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    [[nodiscard]] bool valid() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    /// Converts one stretch; answers how much of it was consumed, and appends what came of it.
    std::size_t convert(std::string_view bytes, std::string& result) const {
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        auto* in = const_cast<char*>(bytes.data());  // iconv does not write to it
        std::size_t left = bytes.size();
        std::array<char, 1024> buffer{};
        while (left > 0) {
            char* out = buffer.data();
            std::size_t room = buffer.size();
            const std::size_t answer = ::iconv(m_handle, &in, &left, &out, &room);
            result.append(buffer.data(), buffer.size() - room);
            if (answer == static_cast<std::size_t>(-1) && errno != E2BIG) break;
        }
        return bytes.size() - left;
    }

private:
    iconv_t m_handle;
};

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

bool isAscii(std::string_view bytes) {
    for (const char c : bytes)
        if (static_cast<unsigned char>(c) > 0x7F) return false;
    return true;
}

void appendEscape(std::string& result, unsigned unit) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    result += "\\U+";
    for (int shift = 12; shift >= 0; shift -= 4) result += digits[(unit >> shift) & 15];
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

TextCoding::TextCoding(Release release, std::string_view codePage)
    : m_converter(std::make_unique<Converter>(iconvName(release, codePage))) {
    if (!m_converter->toWide.valid() || !m_converter->fromWide.valid())
        m_converter = std::make_unique<Converter>("CP1252");
}
TextCoding::~TextCoding() = default;
TextCoding::TextCoding(TextCoding&&) noexcept = default;
TextCoding& TextCoding::operator=(TextCoding&&) noexcept = default;
const std::string& TextCoding::name() const { return m_converter->name; }

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
            const std::size_t used = m_converter->toWide.convert(bytes, wide);
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
    decodeEscapes(characters, result);
    joinSurrogates(result);
    return result;
}

std::string TextCoding::encode(std::wstring_view text) const {
    std::string result;
    for (const wchar_t c : text) {
        const auto code = static_cast<unsigned>(c);
        if (code < 0x20) {
            result += '^';
            result += static_cast<char>(code + 0x40);
        } else if (c == L'^') {
            result += "^ ";
        } else if (code < 0x7F) {
            result += static_cast<char>(code);
        } else if (code >= static_cast<unsigned>(kPrivate) + 0x80 &&
                   code <= static_cast<unsigned>(kPrivate) + 0xFF) {
            result += static_cast<char>(code - static_cast<unsigned>(kPrivate));
        } else {
            std::string bytes;
            const std::string_view one(reinterpret_cast<const char*>(&c), sizeof c);
            if (m_converter->fromWide.convert(one, bytes) == sizeof c && !bytes.empty()) {
                result += bytes;
            } else if (code > 0xFFFF) {
                appendEscape(result, 0xD800 + ((code - 0x10000) >> 10));
                appendEscape(result, 0xDC00 + ((code - 0x10000) & 0x3FF));
            } else {
                appendEscape(result, code);
            }
        }
    }
    return result;
}

void decodeEscapes(std::wstring_view text, std::wstring& units) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c == L'\\' && text.substr(i, 3) == L"\\U+") {
            if (const auto unit = hexDigits(text, i + 3, 4)) {
                units += static_cast<wchar_t>(*unit);
                i += 6;
                continue;
            }
        } else if (c == L'\\' && text.substr(i, 3) == L"\\M+") {
            const auto page = hexDigits(text, i + 3, 1);
            const auto code = hexDigits(text, i + 4, 4);
            if (page && code) {
                if (const wchar_t character = doubleByte(*page, *code)) {
                    units += character;
                    i += 7;
                    continue;
                }
            }
        } else if (c == L'^' && i + 1 < text.size()) {
            const wchar_t next = text[i + 1];
            if (next == L' ' || (next >= L'@' && next <= L'_')) {
                units += next == L' ' ? L'^' : static_cast<wchar_t>(next - 0x40);
                ++i;
                continue;
            }
        }
        units += c;
    }
}

void joinSurrogates(std::wstring& text) {
    std::size_t out = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto high = static_cast<unsigned>(text[i]);
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
