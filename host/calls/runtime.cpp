#include "platform/runtime.h"

#include "host/host.h"

#include <algorithm>
#include <clocale>
#include <cwctype>

namespace {

// Made on first use and kept to the end of the process; null where the C library has no such
// locale.
locale_t unicode() noexcept {
    static const locale_t s_locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return s_locale;
}

constexpr wchar_t kLastAscii = 0x7F;
constexpr char32_t kReplacement = 0xFFFD;

bool isAsciiDigit(wchar_t c) noexcept { return c >= L'0' && c <= L'9'; }
bool isAsciiLetter(wchar_t c) noexcept {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

bool isCodePoint(char32_t c) noexcept { return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF); }

void appendUtf8(std::string& out, char32_t c) {
    const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            put(0xE0 | (c >> 12));
        } else {
            put(0xF0 | (c >> 18));
            put(0x80 | ((c >> 12) & 0x3F));
        }
        put(0x80 | ((c >> 6) & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

struct Sequence {
    std::size_t length = 0;  // 0: no first byte of a sequence
    char32_t bits = 0;
    char32_t least = 0;  // anything below has a shorter form
};

Sequence beginSequence(unsigned char byte) noexcept {
    if (byte < 0x80) return {1, byte, 0};
    if ((byte & 0xE0) == 0xC0) return {2, byte & 0x1FU, 0x80};
    if ((byte & 0xF0) == 0xE0) return {3, byte & 0x0FU, 0x800};
    if ((byte & 0xF8) == 0xF0) return {4, byte & 0x07U, 0x10000};
    return {};
}

}  // namespace

namespace mor {

bool isAlnum(wchar_t c) noexcept { return isAsciiDigit(c) || isAlpha(c); }

bool isAlpha(wchar_t c) noexcept {
    if (c <= kLastAscii || unicode() == nullptr) return isAsciiLetter(c);
    return iswalpha_l(static_cast<wint_t>(c), unicode()) != 0;
}

wchar_t toUpper(wchar_t c) noexcept {
    if (c <= kLastAscii || unicode() == nullptr)
        return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    return static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), unicode()));
}

int compareNoCase(std::wstring_view a, std::wstring_view b) noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] == b[i]) continue;
        const auto left = static_cast<char32_t>(toUpper(a[i]));
        const auto right = static_cast<char32_t>(toUpper(b[i]));
        if (left != right) return left < right ? -1 : 1;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

std::wstring upperCase(std::wstring_view text) {
    std::wstring result{text};
    std::ranges::transform(result, result.begin(), toUpper);
    return result;
}

std::string narrow(std::wstring_view text) { return host::toUtf8(text); }

}  // namespace mor

namespace mor::host {

std::string toUtf8(std::wstring_view text) {
    std::string result;
    result.reserve(text.size());
    for (const wchar_t c : text) {
        const auto code = static_cast<char32_t>(c);
        appendUtf8(result, isCodePoint(code) ? code : kReplacement);
    }
    return result;
}

std::optional<std::wstring> fromUtf8(std::string_view bytes) {
    std::wstring result;
    result.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const Sequence sequence = beginSequence(static_cast<unsigned char>(bytes[i]));
        if (sequence.length == 0 || sequence.length > bytes.size() - i) return std::nullopt;
        char32_t code = sequence.bits;
        for (std::size_t k = 1; k < sequence.length; ++k) {
            const auto byte = static_cast<unsigned char>(bytes[i + k]);
            if ((byte & 0xC0) != 0x80) return std::nullopt;
            code = (code << 6) | (byte & 0x3FU);
        }
        if (code < sequence.least || !isCodePoint(code)) return std::nullopt;
        result += static_cast<wchar_t>(code);
        i += sequence.length;
    }
    return result;
}

}  // namespace mor::host
