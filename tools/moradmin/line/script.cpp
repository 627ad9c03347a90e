#include "tools/moradmin/line/script.h"

#include "tools/moradmin/failure.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace mor::tool {

namespace {

constexpr std::string_view kBlanks = " \t\r";

class ScriptReader {
public:
    explicit ScriptReader(const std::string& text) : m_text(text) {}

    std::vector<ScriptLine> read() {
        while (m_at < m_text.size()) step();
        endCommand();
        return std::move(m_lines);
    }
    /// What was not closed, such as "quote"; null when all is.
    [[nodiscard]] const char* open() const {
        return m_quote != '\0' ? "quote" : m_openList ? "list" : nullptr;
    }
    [[nodiscard]] std::size_t openLine() const { return m_openLine; }

private:
    void step() {
        const char c = m_text[m_at++];
        if (c == '\n') ++m_number;
        if (m_quote != '\0') {
            quoted(c);
        } else if (c == '\'' || c == '"') {
            beginWord();
            m_quote = c;
            m_openLine = m_number;
        } else if (c == '(' && !m_inWord) {
            beginWord();
            takeList();
        } else if (c == '\\' && m_at < m_text.size()) {
            beginWord();
            if (m_text[m_at] == '\n')
                ++m_number;
            else
                m_word += m_text[m_at];
            ++m_at;
        } else if (c == '#' && !m_inWord) {
            m_at = std::min(m_text.find('\n', m_at), m_text.size());
        } else if (c == '\n' || c == ';') {
            endCommand();
            if (c == '\n') m_command = 0;
        } else if (kBlanks.find(c) != std::string_view::npos) {
            endWord();
        } else {
            beginWord();
            m_word += c;
        }
    }
    void quoted(char c) {
        if (c == m_quote)
            m_quote = '\0';
        else if (c == '\\' && m_quote == '"' && m_at < m_text.size() &&
                 (m_text[m_at] == '"' || m_text[m_at] == '\\'))
            m_word += m_text[m_at++];
        else
            m_word += c;
    }
    /// A list with the texts in it, from behind its first parenthesis on.
    void takeList() {
        m_openLine = m_number;
        const std::size_t begin = m_at - 1;
        bool text = false;
        int depth = 1;
        for (; m_at < m_text.size() && depth > 0; ++m_at) {
            const char c = m_text[m_at];
            if (c == '\n') ++m_number;
            if (text && c == '\\' && m_at + 1 < m_text.size())
                ++m_at;
            else if (c == '"')
                text = !text;
            else if (!text)
                depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        }
        m_openList = depth > 0;
        m_word.append(m_text, begin, m_at - begin);
    }
    void beginWord() {
        if (!m_inWord && m_line.words.empty()) m_line.number = m_number;
        m_inWord = true;
    }
    void endWord() {
        if (m_inWord) m_line.words.push_back(std::move(m_word));
        m_word.clear();
        m_inWord = false;
    }
    void endCommand() {
        endWord();
        if (!m_line.words.empty()) {
            m_line.command = ++m_command;
            m_lines.push_back(std::move(m_line));
        }
        m_line = {};
    }

    const std::string& m_text;
    std::size_t m_at = 0;
    std::size_t m_number = 1;
    std::size_t m_command = 0;
    std::size_t m_openLine = 0;
    char m_quote = '\0';
    bool m_openList = false;
    bool m_inWord = false;
    std::string m_word;
    ScriptLine m_line;
    std::vector<ScriptLine> m_lines;
};

}  // namespace

std::vector<ScriptLine> readScript(const std::string& text) {
    ScriptReader reader(text);
    std::vector<ScriptLine> lines = reader.read();
    if (const char* open = reader.open())
        throw Failure(kUsage, "line " + std::to_string(reader.openLine()) + ": the " + open +
                                  " that begins here is not closed");
    return lines;
}

bool isUnfinished(const std::string& text) {
    ScriptReader reader(text);
    static_cast<void>(reader.read());
    return reader.open() != nullptr;
}

}  // namespace mor::tool
