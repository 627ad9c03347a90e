#include "tools/moradmin/picture/text_codes.h"

#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/references/entity_record.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

namespace mor::tool {

namespace {

constexpr unsigned char kFirstShown = 0x20;

/// The character that "%%..." at that place stands for; moves behind it. Nothing for what switches
/// lines, and for what is no code.
std::optional<std::string> percentCode(std::string_view text, std::size_t& at) {
    if (text.substr(at, 2) != "%%" || at + 2 >= text.size()) return std::nullopt;
    const char letter = static_cast<char>(std::tolower(static_cast<unsigned char>(text[at + 2])));
    static constexpr std::pair<char, const char*> known[] = {
        {'d', "\u00B0"}, {'p', "\u00B1"}, {'c', "\u2300"}, {'%', "%"}};
    for (const auto& [code, character] : known)
        if (letter == code) {
            at += 3;
            return character;
        }
    const std::string_view digits = text.substr(at + 2, 3);
    const bool numeric = digits.size() == 3 && std::ranges::all_of(digits, [](unsigned char c) {
                             return std::isdigit(c) != 0;
                         });
    if (!numeric) return std::nullopt;
    const double number = readReal(digits).value_or(0.0);
    if (number < kFirstShown || number > 255) return std::nullopt;
    at += 5;
    return utf8(std::wstring(1, static_cast<wchar_t>(number)));
}

bool isSymbolFont(const FontWish& font) {
    const std::string& name = font.file.empty() ? font.family : font.file;
    return name.size() >= 3 && (name[0] == 'g' || name[0] == 'G') &&
           (name[1] == 'd' || name[1] == 'D') && (name[2] == 't' || name[2] == 'T');
}

/// Letters of the font of tolerances as the symbols that it shows for them.
std::string symbols(const std::string& letters) {
    static constexpr std::pair<char, const char*> known[] = {
        {'a', "\u2220"}, {'b', "\u27C2"}, {'c', "\u23E5"}, {'d', "\u2313"}, {'e', "\u25CB"},
        {'f', "\u2225"}, {'g', "\u232D"}, {'h', "\u2197"}, {'i', "\u232F"}, {'j', "\u2316"},
        {'k', "\u2312"}, {'l', "\u24C1"}, {'m', "\u24C2"}, {'n', "\u2300"}, {'p', "\u24C5"},
        {'r', "\u25CE"}, {'s', "\u24C8"}, {'t', "\u2330"}, {'u', "\u23E4"}};
    std::string shown;
    for (const char letter : letters) {
        const auto* symbol = std::ranges::find(known, letter, &std::pair<char, const char*>::first);
        shown += symbol == std::end(known) ? std::string(1, letter) : symbol->second;
    }
    return shown;
}

/// Reads the codes within a text of many lines.
class FormatReader {
public:
    FormatReader(const std::string& text, const TextFormat& first, int byLayer, int byBlock)
        : m_text(text), m_byLayer(byLayer), m_byBlock(byBlock), m_now(first) {
        m_result.formats.push_back(first);
    }

    FormattedText read() {
        while (m_at < m_text.size()) step();
        endWord();
        return std::move(m_result);
    }

private:
    void step() {
        const char c = m_text[m_at];
        if (c == '\\' && m_at + 1 < m_text.size()) return command();
        if (auto shown = percentCode(m_text, m_at)) {
            m_word += *shown;
        } else if (c == '{') {
            ++m_at;
            m_saved.push_back(m_now);
        } else if (c == '}') {
            ++m_at;
            if (m_saved.empty()) return;
            change(m_saved.back());
            m_saved.pop_back();
        } else {
            ++m_at;
            if (c == ' ') return put(TextPiece::Kind::Blank);
            if (c == '\t') return put(TextPiece::Kind::Tab);
            if (c == '\n') return put(TextPiece::Kind::Paragraph);
            if (static_cast<unsigned char>(c) >= kFirstShown) m_word += c;
        }
    }

    void command() {
        const char letter = m_text[m_at + 1];
        m_at += 2;
        switch (letter) {
            case '\\':
            case '{':
            case '}':
                m_word += letter;
                return;
            case '~':
                m_word += "\u00A0";
                return;
            case 'P':
                return put(TextPiece::Kind::Paragraph);
            case 'N':
                return put(TextPiece::Kind::Column);
            case 'X':
                return put(TextPiece::Kind::Paragraph);
            case 'S':
                return stack();
            default:
                if (!formatCommand(letter)) m_word += std::string("\\") + letter;
        }
    }

    bool formatCommand(char letter) {
        TextFormat next = m_now;
        switch (letter) {
            case 'L':
            case 'l':
                next.under = letter == 'L';
                break;
            case 'O':
            case 'o':
                next.over = letter == 'O';
                break;
            case 'K':
            case 'k':
                next.struck = letter == 'K';
                break;
            default:
                if (!valued(letter, next)) return false;
        }
        change(next);
        return true;
    }

    /// A command with a value behind it, up to a semicolon.
    bool valued(char letter, TextFormat& next) {
        static constexpr std::string_view kKnown = "ACcHWQTpfF";
        if (kKnown.find(letter) == std::string_view::npos) return false;
        const std::string value = upToSemicolon(false);
        const double number = readReal(value).value_or(NAN);
        const bool given = std::isfinite(number);
        if (letter == 'A' && given) next.raised = std::clamp(static_cast<int>(number), 0, 2);
        if (letter == 'C' && given) next.colour = numbered(static_cast<int>(number));
        if (letter == 'c' && given) next.colour = reversed(static_cast<int>(number));
        if (letter == 'H') next.height = scaled(value, next.height);
        if (letter == 'W') next.widened = scaled(value, next.widened);
        if (letter == 'Q' && given) next.oblique = std::clamp(number, -85.0, 85.0);
        if (letter == 'T') next.tracking = scaled(value, next.tracking);
        if (letter == 'p') paragraph(value, next);
        if (letter == 'f' || letter == 'F') font(value, next);
        return true;
    }

    [[nodiscard]] std::optional<int> numbered(int number) const {
        if (number == kByLayer) return m_byLayer;
        return number == kByBlock ? m_byBlock : paletteColour(number);
    }
    /// Here the red channel is the lowest byte.
    static int reversed(int bgr) {
        return (bgr % 0x100) * 0x10000 + (bgr / 0x100 % 0x100) * 0x100 + (bgr / 0x10000) % 0x100;
    }
    /// "2.5" instead of the former value, "2x" times it.
    static double scaled(std::string value, double former) {
        const bool times = !value.empty() && (value.back() == 'x' || value.back() == 'X');
        if (times) value.pop_back();
        const double number = std::fabs(readReal(value).value_or(0.0));
        if (!(number > 0.0)) return former;
        return times ? former * number : number;
    }

    static void font(const std::string& value, TextFormat& next) {
        const std::string name = value.substr(0, value.find('|'));
        if (name.empty()) return;
        const bool file = name.find('.') != std::string::npos;
        next.font = {file ? name : "", file ? "" : name, value.find("|b1") != std::string::npos,
                     value.find("|i1") != std::string::npos};
    }

    /// Indents and alignment: i1,l2,r3,qc,t4,8; an x between them says nothing.
    static void paragraph(const std::string& value, TextFormat& next) {
        std::size_t at = 0;
        const auto number = [&] {
            const std::size_t begin = at;
            while (at < value.size() && (std::isdigit(static_cast<unsigned char>(value[at])) != 0 ||
                                         value[at] == '.' || value[at] == '-' || value[at] == '+'))
                ++at;
            return readReal(std::string_view(value).substr(begin, at - begin)).value_or(0.0);
        };
        bool tabs = false;
        while (at < value.size()) {
            const char letter = value[at];
            if (tabs && std::isdigit(static_cast<unsigned char>(letter)) != 0) {
                next.tabs.push_back(number());
                continue;
            }
            ++at;
            if (letter == 'i') next.indent = number();
            if (letter == 'l') next.left = number();
            if (letter == 'r' && !tabs) next.right = number();
            if (letter == 'q' && at < value.size()) next.across = value[at++];
            if (letter != 't') continue;
            next.tabs.clear();
            tabs = true;
        }
    }

    void stack() {
        endWord();
        const std::string value = upToSemicolon(true);
        TextPiece piece{TextPiece::Kind::Stack, "", "", '\0', m_result.formats.size() - 1};
        for (std::size_t i = 0; i < value.size(); ++i) {
            const char c = value[i];
            if (c == '\\' && i + 1 < value.size())
                (piece.between == '\0' ? piece.text : piece.below) += value[++i];
            else if (piece.between == '\0' && (c == '/' || c == '#' || c == '^'))
                piece.between = c;
            else if (auto shown = percentCode(value, i)) {
                (piece.between == '\0' ? piece.text : piece.below) += *shown;
                --i;
            } else if (static_cast<unsigned char>(c) >= kFirstShown)
                (piece.between == '\0' ? piece.text : piece.below) += c;
        }
        if (piece.between == '\0') piece.kind = TextPiece::Kind::Word;
        m_result.pieces.push_back(std::move(piece));
    }

    std::string upToSemicolon(bool escapes) {
        std::string value;
        while (m_at < m_text.size() && m_text[m_at] != ';') {
            if (escapes && m_text[m_at] == '\\' && m_at + 1 < m_text.size()) {
                value += m_text[m_at++];
            } else if (m_text[m_at] == '\\' || m_text[m_at] == '}') {
                if (!escapes) return value;  // the semicolon was forgotten
            }
            value += m_text[m_at++];
        }
        if (m_at < m_text.size()) ++m_at;
        return value;
    }

    void change(const TextFormat& next) {
        endWord();
        m_now = next;
        m_result.formats.push_back(next);
    }
    void endWord() {
        if (m_word.empty()) return;
        if (isSymbolFont(m_now.font)) m_word = symbols(m_word);
        m_result.pieces.push_back(
            {TextPiece::Kind::Word, std::move(m_word), "", '/', m_result.formats.size() - 1});
        m_word.clear();
    }
    void put(TextPiece::Kind kind) {
        endWord();
        m_result.pieces.push_back({kind, " ", "", '/', m_result.formats.size() - 1});
    }

    const std::string& m_text;
    int m_byLayer;
    int m_byBlock;
    std::size_t m_at = 0;
    TextFormat m_now;
    std::vector<TextFormat> m_saved;
    std::string m_word;
    FormattedText m_result;
};

}  // namespace

std::vector<TextPart> textParts(const std::string& text) {
    std::vector<TextPart> parts(1);
    const auto change = [&](bool TextPart::*line) {
        if (!parts.back().text.empty()) {
            parts.push_back(parts.back());
            parts.back().text.clear();
        }
        parts.back().*line = !(parts.back().*line);
    };
    for (std::size_t i = 0; i < text.size();) {
        if (auto shown = percentCode(text, i)) {
            parts.back().text += *shown;
            continue;
        }
        const char letter =
            text.compare(i, 2, "%%") == 0 && i + 2 < text.size()
                ? static_cast<char>(std::tolower(static_cast<unsigned char>(text[i + 2])))
                : '\0';
        if (letter == 'u' || letter == 'o' || letter == 'k') {
            change(letter == 'u'   ? &TextPart::under
                   : letter == 'o' ? &TextPart::over
                                   : &TextPart::struck);
            i += 3;
        } else {
            if (static_cast<unsigned char>(text[i]) >= kFirstShown) parts.back().text += text[i];
            ++i;
        }
    }
    std::erase_if(parts, [](const TextPart& part) { return part.text.empty(); });
    return parts;
}

FormattedText readFormats(const std::string& text, const TextFormat& first, int byLayer,
                          int byBlock) {
    return FormatReader(text, first, byLayer, byBlock).read();
}

}  // namespace mor::tool
