#include "host/calls/command_line.h"

#include "host/host.h"
#include "host/permanent.h"
#include "platform/output_calls.h"
#include "platform/types.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <csignal>
#include <cstdarg>
#include <cwchar>
#include <system_error>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

struct CommandLine {
    std::wstring captured;
    std::function<void(std::wstring_view)> printer;
};

CommandLine& commandLine() {
    static Permanent<CommandLine> s_commandLine;
    return *s_commandLine;
}

volatile std::sig_atomic_t s_breakPressed = 0;

constexpr int kMaxPrecision = 1000;
constexpr std::size_t kMaxDigitsOfReal = 400;

enum class Length { Char, Short, Int, Long };

struct Conversion {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool zero = false;
    bool alternate = false;
    int width = 0;
    int precision = -1;
    Length length = Length::Int;
    wchar_t type = 0;
};

// Puts a format and its arguments together. The arguments are taken strictly from left to right.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized): begun by the caller, out of the linter's sight
class Formatter {
public:
    Formatter(std::wstring_view format, std::va_list* arguments)
        : m_format(format), m_arguments(arguments) {}

    [[nodiscard]] std::wstring run() {
        while (m_position < m_format.size()) {
            const std::size_t percent = std::min(m_format.find(L'%', m_position), m_format.size());
            m_result += m_format.substr(m_position, percent - m_position);
            m_position = percent;
            if (m_position < m_format.size()) convert();
        }
        return std::move(m_result);
    }

private:
    void convert() {
        const std::size_t begin = m_position++;
        const Conversion conversion = readConversion();
        if (!write(conversion)) m_result += m_format.substr(begin, m_position - begin);
    }

    Conversion readConversion() {
        Conversion result;
        readFlags(result);
        result.width = readNumber(0);
        if (result.width < 0) {
            result.left = true;
            result.width = -result.width;
        }
        if (accept(L'.')) result.precision = std::min(readNumber(0), kMaxPrecision);
        readLength(result);
        if (m_position < m_format.size()) result.type = m_format[m_position++];
        return result;
    }

    void readFlags(Conversion& result) {
        while (true) {
            if (accept(L'-'))
                result.left = true;
            else if (accept(L'+'))
                result.plus = true;
            else if (accept(L' '))
                result.blank = true;
            else if (accept(L'0'))
                result.zero = true;
            else if (accept(L'#'))
                result.alternate = true;
            else
                return;
        }
    }

    int readNumber(int missing) {
        constexpr int kMax = 1'000'000;
        if (accept(L'*')) return std::clamp(va_arg(*m_arguments, int), -kMax, kMax);
        int number = missing;
        for (; peek() >= L'0' && peek() <= L'9'; ++m_position)
            number = std::min(number * 10 + static_cast<int>(peek() - L'0'), kMax);
        return number;
    }

    void readLength(Conversion& result) {
        if (accept(L'h')) {
            result.length = accept(L'h') ? Length::Char : Length::Short;
        } else if (accept(L'l')) {
            accept(L'l');
            result.length = Length::Long;
        } else if (accept(L'z') || accept(L'j') || accept(L't')) {
            result.length = Length::Long;
        }
    }

    // False for a conversion that is not known; no argument is taken then.
    bool write(const Conversion& c) {
        switch (c.type) {
            case L'%':
                m_result += L'%';
                return true;
            case L's':
                writeText(c);
                return true;
            case L'c':
                pad(c, {}, std::wstring(1, static_cast<wchar_t>(va_arg(*m_arguments, int))), false);
                return true;
            case L'd':
            case L'i':
                writeSigned(c);
                return true;
            case L'u':
            case L'x':
            case L'X':
            case L'o':
                writeUnsigned(c);
                return true;
            case L'f':
            case L'F':
            case L'e':
            case L'E':
            case L'g':
            case L'G':
                writeReal(c);
                return true;
            default:
                return false;
        }
    }

    void writeText(const Conversion& c) {
        const auto* text = va_arg(*m_arguments, const wchar_t*);
        std::wstring_view view;  // no text prints nothing
        if (text != nullptr && c.precision >= 0) {
            const std::wstring_view limit{text, static_cast<std::size_t>(c.precision)};
            view = limit.substr(0, wcsnlen(text, limit.size()));
        } else if (text != nullptr) {
            view = text;
        }
        pad(c, {}, view, false);
    }

    void writeSigned(const Conversion& c) {
        long value =
            c.length == Length::Long ? va_arg(*m_arguments, long) : va_arg(*m_arguments, int);
        if (c.length == Length::Short) value = static_cast<short>(value);
        if (c.length == Length::Char)
            value = static_cast<signed char>(value);  // NOLINT(bugprone-signed-char-misuse)
        const auto bits = static_cast<unsigned long>(value);
        writeDigits(c, signText(c, value < 0), value < 0 ? 0UL - bits : bits, 10);
    }

    void writeUnsigned(const Conversion& c) {
        unsigned long value = c.length == Length::Long ? va_arg(*m_arguments, unsigned long)
                                                       : va_arg(*m_arguments, unsigned int);
        if (c.length == Length::Short) value = static_cast<unsigned short>(value);
        if (c.length == Length::Char) value = static_cast<unsigned char>(value);
        const bool hexadecimal = c.type == L'x' || c.type == L'X';
        std::wstring prefix;
        if (c.alternate && value != 0 && hexadecimal) prefix = c.type == L'x' ? L"0x" : L"0X";
        if (c.alternate && value != 0 && c.type == L'o') prefix = L"0";
        writeDigits(c, prefix, value, hexadecimal ? 16 : c.type == L'o' ? 8 : 10);
    }

    void writeDigits(const Conversion& c, std::wstring_view prefix, unsigned long value, int base) {
        std::array<char, 32> buffer{};
        const char* end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base).ptr;
        std::wstring digits(static_cast<const char*>(buffer.data()), end);
        if (value == 0 && c.precision == 0) digits.clear();
        const std::size_t least = c.precision < 0 ? 0 : static_cast<std::size_t>(c.precision);
        if (digits.size() < least) digits.insert(0, least - digits.size(), L'0');
        pad(c, prefix, cased(c, std::move(digits)), c.zero && c.precision < 0);
    }

    // Not through the C library's printf, whose decimal point follows the locale.
    void writeReal(const Conversion& c) {
        const double value = va_arg(*m_arguments, double);
        const auto type = static_cast<wchar_t>(c.type | 0x20);  // lower case
        const auto form = type == L'f'   ? std::chars_format::fixed
                          : type == L'e' ? std::chars_format::scientific
                                         : std::chars_format::general;
        const int precision = c.precision < 0 ? 6 : c.precision;
        std::vector<char> buffer(kMaxDigitsOfReal + static_cast<std::size_t>(precision));
        const char* end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, form, precision).ptr;
        std::wstring digits(static_cast<const char*>(buffer.data()), end);
        const bool negative = digits.front() == L'-';
        if (negative) digits.erase(0, 1);
        const bool finite = digits.front() >= L'0' && digits.front() <= L'9';
        pad(c, signText(c, negative), cased(c, std::move(digits)), c.zero && finite);
    }

    [[nodiscard]] static std::wstring_view signText(const Conversion& c, bool negative) {
        if (negative) return L"-";
        if (c.plus) return L"+";
        return c.blank ? L" " : L"";
    }

    [[nodiscard]] static std::wstring cased(const Conversion& c, std::wstring digits) {
        if (c.type == L'X' || c.type == L'E' || c.type == L'G' || c.type == L'F')
            for (wchar_t& digit : digits)
                if (digit >= L'a' && digit <= L'z')
                    digit = static_cast<wchar_t>(digit - L'a' + L'A');
        return digits;
    }

    void pad(const Conversion& c, std::wstring_view prefix, std::wstring_view text, bool zeros) {
        const std::size_t size = prefix.size() + text.size();
        const auto width = static_cast<std::size_t>(c.width);
        const std::size_t missing = width > size ? width - size : 0;
        if (!c.left && !zeros) m_result.append(missing, L' ');
        m_result += prefix;
        if (!c.left && zeros) m_result.append(missing, L'0');
        m_result += text;
        if (c.left) m_result.append(missing, L' ');
    }

    [[nodiscard]] wchar_t peek() const {
        return m_position < m_format.size() ? m_format[m_position] : L'\0';
    }
    bool accept(wchar_t c) {
        if (peek() != c || c == L'\0') return false;
        ++m_position;
        return true;
    }

    std::wstring_view m_format;
    std::va_list* m_arguments;
    std::size_t m_position = 0;
    std::wstring m_result;
};
// NOLINTEND(clang-analyzer-valist.Uninitialized)

}  // namespace

void printText(std::wstring_view text) {
    if (commandLine().printer)
        commandLine().printer(text);
    else
        commandLine().captured += text;
}

std::wstring takePrintedText() { return std::exchange(commandLine().captured, {}); }

void setPrinter(std::function<void(std::wstring_view)> printer) {
    commandLine().printer = std::move(printer);
}

void pressBreakKey() noexcept { s_breakPressed = 1; }

}  // namespace mor::host

int acutPrintf(const wchar_t* format, ...) {
    if (format == nullptr) return RTERROR;
    std::va_list arguments;
    va_start(arguments, format);
    std::wstring text = mor::host::Formatter{format, &arguments}.run();
    va_end(arguments);
    mor::host::printText(text);
    return RTNORM;
}

int acedUsrBrk() {
    const bool pressed = mor::host::s_breakPressed != 0;
    mor::host::s_breakPressed = 0;
    return pressed ? 1 : 0;
}
