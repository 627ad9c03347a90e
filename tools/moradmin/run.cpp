#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"

#include <algorithm>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::string_view kBlanks = " \t\r";

/// Cuts a script into commands of words, as a shell does: blanks split words, quotes keep them
/// together, a backslash takes the next character as it is, `#` begins a comment, line ends and `;`
/// end a command.
class ScriptReader {
public:
    explicit ScriptReader(const std::string& text) : m_text(text) {}

    struct Line {
        std::size_t number = 0;
        std::vector<std::string> words;
    };

    std::vector<Line> read() {
        while (m_at < m_text.size()) step();
        if (m_quote != '\0')
            throw Failure(kUsage, "line " + std::to_string(m_quoteLine) +
                                      ": the quote that begins here is not closed");
        endCommand();
        return std::move(m_lines);
    }

private:
    void step() {
        const char c = m_text[m_at++];
        if (c == '\n') ++m_number;
        if (m_quote != '\0') {
            if (c == m_quote)
                m_quote = '\0';
            else if (c == '\\' && m_quote == '"' && m_at < m_text.size() &&
                     (m_text[m_at] == '"' || m_text[m_at] == '\\'))
                m_word += m_text[m_at++];
            else
                m_word += c;
        } else if (c == '\'' || c == '"') {
            m_quote = c;
            m_quoteLine = m_number;
            m_inWord = true;
        } else if (c == '\\' && m_at < m_text.size()) {
            if (m_text[m_at] == '\n')
                ++m_number;
            else
                m_word += m_text[m_at];
            ++m_at;
            m_inWord = true;
        } else if (c == '#' && !m_inWord) {
            m_at = std::min(m_text.find('\n', m_at), m_text.size());
        } else if (c == '\n' || c == ';') {
            endCommand();
        } else if (kBlanks.find(c) != std::string_view::npos) {
            endWord();
        } else {
            if (!m_inWord && m_line.words.empty()) m_line.number = m_number;
            m_word += c;
            m_inWord = true;
        }
    }
    void endWord() {
        if (m_inWord) m_line.words.push_back(std::move(m_word));
        m_word.clear();
        m_inWord = false;
    }
    void endCommand() {
        endWord();
        if (!m_line.words.empty()) m_lines.push_back(std::move(m_line));
        m_line = {};
    }

    const std::string& m_text;
    std::size_t m_at = 0;
    std::size_t m_number = 1;
    std::size_t m_quoteLine = 0;
    char m_quote = '\0';
    bool m_inWord = false;
    std::string m_word;
    Line m_line;
    std::vector<Line> m_lines;
};

std::string scriptText(const Options& options) {
    if (options.script && !options.arguments.empty())
        throw Failure(kUsage, "a FILE or -c COMMANDS, not both");
    if (options.script) return *options.script;
    return readInput(options.argument("-"));
}

/// A command that looks at what the ones before it have done, and is saved with them.
void runLine(Session& session, const ScriptReader::Line& line) {
    const auto command = std::ranges::find(commands(), line.words.front(), &Command::name);
    const std::string word = "\"" + line.words.front() + "\"";
    if (command == commands().end()) throw Failure(kUsage, word + " is not a command");
    if (command->run == nullptr || command->run == &runRun)
        throw Failure(kUsage, word + " cannot stand in a script, which works on one drawing");
    const Options options = parseScriptLine(line.words, session.file());
    const bool changing = (command->options & kChanging) != 0;
    if (changing && (!options.output.empty() || options.dryRun || options.noBackup ||
                     options.salvageDrawing || options.experimentalDwg))
        throw Failure(
            kUsage,
            "--dry-run, --no-backup, --experimental-dwg, --salvage-drawing and -o belong to run "
            "itself");
    if (!options.inside.empty() && changing)
        throw Failure(kRefused, "references are read-only; change the referenced drawing itself");
    if (options.referenceRoot || !options.referenceFolders.empty() ||
        !options.referenceMappings.empty())
        throw Failure(kUsage, "--xref-root, --xref-path and --map belong to run itself");
    if (!options.inside.empty())
        throw Failure(kUsage, "--in cannot stand in a script, which works on one drawing");
    const int code = command->run(session, options);
    // The store is not walked again for each of many lines.
    if (command->run == &runPut || command->run == &runRm)
        session.noteStored();
    else if (changing)
        session.forget();
    if (code != kDone && code != kNo)
        throw Failure(static_cast<ExitCode>(code),
                      word + " ended with exit code " + std::to_string(code));
}

}  // namespace

int runRun(Session& session, const Options& options) {
    for (const ScriptReader::Line& line : ScriptReader(scriptText(options)).read()) {
        try {
            runLine(session, line);
        } catch (const Failure& failure) {
            throw Failure(failure.code(),
                          "line " + std::to_string(line.number) + ": " + failure.what() +
                              "; nothing was saved",
                          failure.path());
        }
    }
    return kDone;
}

}  // namespace mor::tool
