#include "host/host.h"
#include "host/lisp/lisp_value.h"
#include "host/text/escapes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <utility>

namespace mor::host {

namespace {

// ---- printing -----------------------------------------------------------------------------------

constexpr double kLeastFixed = 1e-5;
constexpr double kEndOfFixed = 1e16;
constexpr int kPrincDigits = 6;
constexpr std::size_t kRealBuffer = 64;

using RealBuffer = std::array<char, kRealBuffer>;

// A real shows a point or an exponent with a point before it, so that it never reads as an integer.
std::wstring withPoint(const RealBuffer& buffer, const char* end) {
    std::wstring text(buffer.data(), end);
    const std::size_t exponent = text.find(L'e');
    if (text.find_first_of(L".n") == std::wstring::npos)  // n: inf and nan
        text.insert(std::min(exponent, text.size()), L".0");
    return text;
}

std::wstring exactReal(double value) {
    RealBuffer buffer{};
    const double size = std::abs(value);
    const bool fixed = size == 0.0 || (size >= kLeastFixed && size < kEndOfFixed);
    const auto form = fixed ? std::chars_format::fixed : std::chars_format::scientific;
    return withPoint(buffer,
                     std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, form).ptr);
}

std::wstring princReal(double value) {
    RealBuffer buffer{};
    return withPoint(buffer, std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                           std::chars_format::general, kPrincDigits)
                                 .ptr);
}

std::wstring octalEscape(wchar_t c) {
    std::wstring result = L"\\";
    for (const unsigned shift : {6U, 3U, 0U})
        result += static_cast<wchar_t>(L'0' + ((static_cast<unsigned>(c) >> shift) & 7U));
    return result;
}

bool isControl(wchar_t c) { return (c >= 0 && c < 0x20) || (c >= 0x7F && c < 0xA0); }
bool isSurrogate(wchar_t c) { return c >= 0xD800 && c <= 0xDFFF; }

std::wstring surrogateEscape(wchar_t c) {
    std::string escape;
    appendUnicodeEscape(escape, c);
    return {escape.begin(), escape.end()};
}

std::wstring quotedText(std::wstring_view text) {
    std::wstring result = L"\"";
    for (const wchar_t c : text) {
        constexpr std::wstring_view kEscaped = L"\"\\\n\r\t\x1B";
        constexpr std::wstring_view kLetters = L"\"\\nrte";
        if (const std::size_t at = kEscaped.find(c); at != std::wstring_view::npos) {
            result += L'\\';
            result += kLetters[at];
        } else if (isControl(c)) {
            result += octalEscape(c);
        } else if (isSurrogate(c)) {
            result += surrogateEscape(c);
        } else {
            result += c;
        }
    }
    return result + L'"';
}

std::wstring exactAtom(const LispToken& token) {
    switch (token.kind()) {
        case LispKind::Integer:
            return std::to_wstring(token.asInteger());
        case LispKind::Real:
            return exactReal(token.asReal());
        case LispKind::String:
            return quotedText(token.asString());
        case LispKind::EntityName: {
            const EntityName name = token.asEntityName();
            return L"(handent " + quotedText(name.isNone() ? L"0" : handleText(name)) + L")";
        }
        default:
            return L"nil";
    }
}

std::wstring princAtom(const LispToken& token) {
    switch (token.kind()) {
        case LispKind::Integer:
            return std::to_wstring(token.asInteger());
        case LispKind::Real:
            return princReal(token.asReal());
        case LispKind::String:
            return token.asString();
        case LispKind::EntityName: {
            const EntityName name = token.asEntityName();
            const auto number = (static_cast<std::uint64_t>(name.second()) << 32U) +
                                static_cast<std::uint64_t>(name.first());
            std::array<char, 16> buffer{};
            char* end = std::to_chars(buffer.begin(), buffer.end(), number, 16).ptr;
            return L"<Entity name: " + std::wstring(buffer.data(), end) + L">";
        }
        default:
            return L"nil";
    }
}

std::wstring print(const CMORAdsLispVar& value, std::wstring (*atomText)(const LispToken&)) {
    std::wstring result;
    bool separate = false;
    for (const LispToken& token : tokensOf(value)) {
        if (separate && !token.is(LispKind::Close)) result += L' ';
        separate = !token.is(LispKind::Open);
        if (token.is(LispKind::Open))
            result += L'(';
        else if (token.is(LispKind::Close))
            result += L')';
        else if (token.is(LispKind::Dot))
            result += L'.';
        else
            result += atomText(token);
    }
    return result;
}

// ---- reading ------------------------------------------------------------------------------------

// What ends the reading; the position is that of the offending character.
struct SyntaxError {
    std::size_t position = 0;
    std::string text;
};

class Reader {
public:
    Reader(std::wstring_view text, UnknownHandles unknown) : m_text(text), m_unknown(unknown) {}

    Result<CMORAdsLispVar> run() {
        while (!m_builder.complete()) {
            if (!readNext()) return error();
        }
        skipBlanks();
        if (!atEnd()) {
            fail(m_position, "text after the value; put several values into one list: (1 2)");
            return error();
        }
        return m_builder.take();
    }

private:
    bool readNext() {
        skipBlanks();
        if (atEnd()) return failAtEnd();
        const wchar_t c = m_text[m_position];
        if (c == L'\'') return readQuoteMark();
        if (c == L'(') return readOpen();
        if (c == L')') return readClose();
        if (c == L'"') return readString();
        return readWord();
    }

    bool failAtEnd() {
        if (m_opened.empty())
            return fail(m_position, "no value; write nil, a number, a \"text\" or a (list)");
        return fail(m_opened.back(), "this ( is never closed; add a )");
    }

    bool readQuoteMark() {
        const std::size_t begin = m_position++;
        skipBlanks();
        if (atEnd() || m_text[m_position] == L')')
            return fail(begin, "a value must stand behind the '; remove it, or write '(1 2)");
        return true;
    }

    bool readOpen() {
        const std::size_t begin = m_position++;
        skipBlanks();
        const std::size_t word = m_position;
        if (equalNoCase(takeWord(), L"handent")) return readHandent(begin);
        m_position = word;
        m_opened.push_back(begin);
        return put(LispToken::open(), begin, kAfterTail);
    }

    bool readClose() {
        if (m_opened.empty())
            return fail(m_position, "a ) without its (; remove it, or begin with (");
        m_opened.pop_back();
        return put(LispToken::close(), m_position++, "a value must stand behind the dot: (1 . 2)");
    }

    bool readHandent(std::size_t begin) {
        constexpr const char* kForm = "handent takes one handle as a text: (handent \"1A2F\")";
        std::wstring handle;
        skipBlanks();
        if (atEnd() || m_text[m_position] != L'"') return fail(m_position, kForm);
        if (!readStringInto(handle)) return false;
        skipBlanks();
        if (atEnd() || m_text[m_position] != L')') return fail(m_position, kForm);
        ++m_position;
        if (!handle.empty() && handle.find_first_not_of(L'0') == std::wstring::npos)
            return put(LispToken::entityName({}), begin, kAfterTail);
        std::optional<EntityName> name = nameOfHandle(handle);
        if (!name && m_unknown == UnknownHandles::Keep) name = keptNameOfHandle(handle);
        if (!name)
            return fail(begin, "no record of the drawing has the handle " +
                                   toUtf8(quotedText(handle)) +
                                   "; give the handle of an existing one");
        return put(LispToken::entityName(*name), begin, kAfterTail);
    }

    bool readString() {
        const std::size_t begin = m_position;
        std::wstring text;
        return readStringInto(text) && put(LispToken::string(std::move(text)), begin, kAfterTail);
    }

    bool readStringInto(std::wstring& result) {
        const std::size_t begin = m_position++;
        while (!atEnd() && m_text[m_position] != L'"') {
            if (m_text[m_position] == L'\\') {
                if (!readEscape(result)) return false;
            } else {
                result += m_text[m_position++];
            }
        }
        if (atEnd()) return fail(begin, "this text is never closed; add a \" at its end");
        ++m_position;
        return true;
    }

    bool readEscape(std::wstring& result) {
        const std::size_t begin = m_position++;
        const wchar_t c = atEnd() ? L'\0' : m_text[m_position];
        constexpr std::wstring_view kLetters = L"\"\\nrte";
        constexpr std::wstring_view kMeanings = L"\"\\\n\r\t\x1B";
        if (const std::size_t at = kLetters.find(c); at != std::wstring_view::npos) {
            result += kMeanings[at];
            ++m_position;
            return true;
        }
        if (c >= L'0' && c <= L'7') return readOctal(result);
        if (m_text.substr(m_position, 2) == L"U+") return readCodeUnit(result, begin);
        return fail(begin,
                    R"(unknown escape; write \\ for a backslash (known are \" \\ \n \r \t \e)"
                    R"( \nnn \U+XXXX))");
    }

    bool readOctal(std::wstring& result) {
        wchar_t code = 0;
        for (int i = 0;
             i < 3 && !atEnd() && m_text[m_position] >= L'0' && m_text[m_position] <= L'7'; ++i)
            code = code * 8 + (m_text[m_position++] - L'0');
        result += code;
        return true;
    }

    bool readCodeUnit(std::wstring& result, std::size_t begin) {
        const auto digits = hexDigits(m_text, m_position + 2, 4);
        if (!digits) return fail(begin, kCodeUnitForm);
        const char32_t unit = *digits;
        m_position += 6;
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (low && begin != 0 && begin == m_endOfHigh) {
            const auto high = static_cast<char32_t>(result.back());
            result.back() =
                static_cast<wchar_t>(0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
        } else {
            result += static_cast<wchar_t>(unit);
        }
        m_endOfHigh = unit >= 0xD800 && unit <= 0xDBFF ? m_position : 0;
        return true;
    }

    bool readWord() {
        const std::size_t begin = m_position;
        const std::wstring_view word = takeWord();
        if (word == L".")
            return put(LispToken::dot(), begin,
                       "a dot stands between the last two values of a list: (1 . 2)");
        if (equalNoCase(word, L"nil")) return put(LispToken::nil(), begin, kAfterTail);
        if (looksLikeNumber(word)) return readNumber(word, begin);
        const std::string shown = toUtf8(word);
        return fail(begin,
                    shown + " is no value; write a text in quotes: " + toUtf8(quotedText(word)));
    }

    // From here on no letters but an exponent may follow, or it is a bare word.
    static bool looksLikeNumber(std::wstring_view word) {
        if (word.starts_with(L'+') || word.starts_with(L'-')) word.remove_prefix(1);
        const std::size_t digit = word.starts_with(L'.') ? 1 : 0;
        return word.size() > digit && word[digit] >= L'0' && word[digit] <= L'9' &&
               word.find_first_not_of(L"0123456789.eE+-") == std::wstring_view::npos;
    }

    bool readNumber(std::wstring_view word, std::size_t begin) {
        std::string text = toUtf8(word);
        if (text.front() == '+') text.erase(0, 1);
        const char* end = text.data() + text.size();
        std::int32_t integer = 0;
        const auto whole = std::from_chars(text.data(), end, integer);
        if (whole.ptr == end && whole.ec == std::errc{})
            return put(LispToken::integer(integer), begin, kAfterTail);
        if (whole.ptr == end)
            return fail(begin, toUtf8(word) +
                                   " is outside the range of integers, -2147483648 to 2147483647; "
                                   "write " +
                                   toUtf8(word) + ".0 for a real");
        double real = 0.0;
        const auto [stop, problem] = std::from_chars(text.data(), end, real);
        if (stop != end)
            return fail(begin, toUtf8(word) + " is no number; write a text in quotes: " +
                                   toUtf8(quotedText(word)));
        if (problem != std::errc{})
            return fail(begin, toUtf8(word) + " is outside the range of reals; the largest is " +
                                   toUtf8(exactReal(std::numeric_limits<double>::max())));
        return put(LispToken::real(real), begin, kAfterTail);
    }

    [[nodiscard]] std::wstring_view takeWord() {
        const std::size_t begin = m_position;
        m_position = std::min(m_text.find_first_of(L" \t\r\n\f()\"';", begin), m_text.size());
        return m_text.substr(begin, m_position - begin);
    }

    void skipBlanks() {
        while (!atEnd()) {
            m_position =
                std::min(m_text.find_first_not_of(L" \t\r\n\f", m_position), m_text.size());
            if (atEnd() || m_text[m_position] != L';') return;
            m_position = std::min(m_text.find_first_of(L"\r\n", m_position), m_text.size());
        }
    }

    [[nodiscard]] bool atEnd() const { return m_position >= m_text.size(); }

    bool put(LispToken token, std::size_t begin, const char* otherwise) {
        return m_builder.add(std::move(token)) || fail(begin, otherwise);
    }

    bool fail(std::size_t position, std::string text) {
        m_error = {position, std::move(text)};
        return false;
    }

    [[nodiscard]] Error error() const {
        const std::wstring_view before = m_text.substr(0, m_error.position);
        const auto line = std::ranges::count(before, L'\n') + 1;
        const std::size_t lineEnd = before.rfind(L'\n');
        const std::size_t column =
            before.size() - (lineEnd == std::wstring_view::npos ? 0 : lineEnd + 1) + 1;
        return {ErrorKind::Invalid,
                {},
                0,
                "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
                    m_error.text};
    }

    static constexpr const char* kAfterTail = "only one value may stand behind the dot: (1 . 2)";
    static constexpr const char* kCodeUnitForm = R"(\U+ takes four hexadecimal digits: \U+00E4)";

    std::wstring_view m_text;
    std::size_t m_position = 0;
    std::size_t m_endOfHigh = 0;  // where an escaped high surrogate ended
    std::vector<std::size_t> m_opened;
    LispBuilder m_builder;
    UnknownHandles m_unknown;
    SyntaxError m_error;
};

}  // namespace

std::string lispText(const CMORAdsLispVar& value) { return toUtf8(print(value, exactAtom)); }

std::wstring princText(const CMORAdsLispVar& value) { return print(value, princAtom); }

Result<CMORAdsLispVar> readLisp(std::string_view text, UnknownHandles unknown) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    const std::optional<std::wstring> wide = fromUtf8(text);
    if (!wide) return Error{ErrorKind::Invalid, {}, 0, "the text is no UTF-8; convert it first"};
    return Reader{*wide, unknown}.run();
}

}  // namespace mor::host
