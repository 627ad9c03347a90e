#include "tools/moradmin/changes/contents.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/line/complete.h"
#include "tools/moradmin/line/help.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/line/script.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/running/apart.h"
#include "tools/moradmin/running/guarded.h"
#include "tools/moradmin/running/progress.h"
#include "tools/moradmin/shell/editor.h"
#include "tools/moradmin/store/paths.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace mor::tool {

namespace {

/// Commands that the shell has besides those of scripts.
constexpr std::array kOwnCommands = {"cd", "pwd", "commit", "rollback", "help", "exit", "quit"};

/// How many of the words behind a command are paths of the store, from the first one on.
std::size_t pathCount(const Command& command) {
    if (command.name == "put" || command.name == "find") return 1;
    const bool paths =
        command.arguments.find("PATH") != std::string_view::npos || command.arguments == "FROM TO";
    return paths && command.name != "diff" && command.name != "dict"
               ? static_cast<std::size_t>(kMany)
               : 0;
}

/// A path without "." and "..".
std::string shortened(const std::string& path) {
    std::vector<std::string> parts;
    for (std::size_t begin = 1, end = 0; end != std::string::npos; begin = end + 1) {
        end = path.find('/', begin);
        const std::string part = path.substr(begin, end == std::string::npos ? end : end - begin);
        if (part == ".." && !parts.empty()) parts.pop_back();
        if (!part.empty() && part != "." && part != "..") parts.push_back(part);
    }
    std::string result;
    for (const std::string& part : parts) result += "/" + part;
    return result.empty() ? "/" : result;
}

class Shell {
public:
    explicit Shell(const Options& options)
        : m_options(options),
          m_terminal(::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1) {
        // Ctrl-C gives up a line, or ends the command that runs, never what is pending.
        if (m_terminal) m_onInterrupt = std::signal(SIGINT, SIG_IGN);
        reopen();
    }

    int run() {
        LineEditor editor([this](const std::string& line) { return complete(line); });
        std::string text;
        while (true) {
            const auto line = editor.read(text.empty() ? prompt() : "... ");
            if (!line) {
                if (!text.empty()) static_cast<void>(runText(text));  // says what is not closed
                text.clear();
                if (endOfInput()) return m_code;
                continue;
            }
            m_warned = false;
            if (editor.gaveUp()) {
                text.clear();
                continue;
            }
            text += (text.empty() ? "" : "\n") + *line;
            if (isUnfinished(text)) continue;
            if (text.find_first_not_of(" \t") != std::string::npos) editor.remember(text);
            const bool goesOn = runText(text);
            text.clear();
            if (!goesOn) return m_code;
        }
    }

private:
    /// Whether the shell ends with its input: what people have not saved goes only when they say so
    /// twice.
    bool endOfInput() {
        if (m_terminal) std::cout << "\n";
        if (m_warned || leave()) return true;
        m_code = kNo;
        m_warned = true;
        return !m_terminal;
    }
    /// Runs what changes nothing. On a terminal Ctrl-C ends it, and the shell goes on as it was.
    int apart(const std::function<int()>& run) {
        if (!m_terminal) return run();
        return runApart(m_onInterrupt, [&] {
            const Ticking ticking("working on " + m_options.drawing, true);
            return guarded(m_options, run);
        });
    }
    void reopen() {
        const Ticking ticking("loading " + m_options.drawing, m_terminal);
        auto fresh = std::make_unique<Session>(m_options.drawing);
        m_session = std::move(fresh);
        m_session->activate();  // the former one has left none behind
        m_saved = contentsOf(m_session->state());
        m_pending = false;
    }
    [[nodiscard]] std::string prompt() const {
        return std::filesystem::path(m_options.drawing).filename().string() + ":" + m_directory +
               (m_pending ? "*> " : "> ");
    }
    /// False when the shell ends.
    bool runText(const std::string& text) {
        bool goesOn = true;
        Options own = m_options;
        m_code = guarded(own, [&] {
            int code = kDone;
            for (const ScriptLine& line : readScript(text)) {
                code = runLine(line.words, goesOn);
                if (!goesOn || (code != kDone && code != kNo)) break;
            }
            return code;
        });
        std::cout.flush();
        return goesOn;
    }
    int runLine(const std::vector<std::string>& words, bool& goesOn) {
        const std::string& name = words.front();
        const std::string argument = words.size() > 1 ? words[1] : "";
        if (name == "exit" || name == "quit") {
            goesOn = argument != "-f" && !leave();
        } else if (name == "cd") {
            changeDirectory(argument.empty() ? "/" : argument);
        } else if (name == "pwd") {
            std::cout << m_directory << "\n";
        } else if (name == "commit") {
            return commit();
        } else if (name == "rollback") {
            reopen();
        } else if (name == "help") {
            help(argument);
        } else {
            return runCommand(words);
        }
        return kDone;
    }
    int runCommand(const std::vector<std::string>& words) {
        Options options = scriptLine(*m_session, words);
        const Command& command = *commandNamed(options.command);
        const bool changing = (command.options & kChanging) != 0;
        if (changing) m_session->refuseUnwritable(m_options);
        const std::size_t paths = pathCount(command);
        for (std::size_t i = 0; i < options.arguments.size() && i < paths; ++i)
            options.arguments[i] = absolute(options.arguments[i]);
        const bool here = paths != 0 && options.arguments.empty();
        if (here && (command.options & kStorePaths) != 0) options.arguments = {m_directory};
        if (here && command.name == "tree") options.arguments = {m_directory};
        if (!changing) return apart([&] { return runScriptLine(*m_session, options); });
        // A command that fails may have done half of its work; the shell promises that it did none.
        const Contents before = contentsOf(m_session->state());
        try {
            const int code = runScriptLine(*m_session, options);
            m_pending = true;
            return code;
        } catch (const Failure&) {
            m_session->forget();
            if (contentsOf(m_session->state()) != before)
                printNote("part of it was done; diff shows what is pending, rollback drops it");
            throw;
        }
    }
    [[nodiscard]] std::string absolute(const std::string& word) const {
        return shortened(
            word.starts_with('/') ? word : (m_directory == "/" ? "" : m_directory) + "/" + word);
    }
    void changeDirectory(const std::string& word) {
        const std::string path = absolute(word);
        const std::wstring directory = directoryPath(*m_session, path);
        if (!isStoredDirectory(*m_session, directory)) refuseMissing(*m_session, directory);
        m_directory = path;
    }
    int commit() {
        const int code = apart([this] {
            static_cast<void>(m_session->save(m_options));
            return static_cast<int>(kDone);
        });
        if (code != kDone) return code;
        reopen();
        if (!isStoredDirectory(*m_session, wide(m_directory))) m_directory = "/";
        return kDone;
    }
    /// Whether nothing is pending; says so otherwise.
    bool leave() {
        if (!m_pending) return true;
        m_session->forget();
        if (contentsOf(m_session->state()) == m_saved) return true;
        printNote(
            "changes are pending: commit saves them, rollback drops them, exit -f leaves them "
            "unsaved");
        return false;
    }
    static void help(const std::string& name) {
        if (const Command* command = commandNamed(name)) return printPage(*command);
        if (!name.empty()) throw Failure(kUsage, noCommand(name));
        std::cout
            << "cd PATH, pwd; commit saves, rollback drops what is pending, diff shows it; exit\n";
        for (const Command& command : commands())
            if (command.run != nullptr && (command.options & kNotInScripts) == 0)
                std::cout << command.name << "  ";
        std::cout << "\n";
    }
    std::vector<std::string> complete(const std::string& line) {
        std::vector<std::string> words;
        try {
            const std::vector<ScriptLine> lines = readScript(line);
            if (!lines.empty() && !line.ends_with(';')) words = lines.back().words;
        } catch (const Failure&) {
            return {};  // within a quote or list there is nothing to complete
        }
        if (words.empty() || line.ends_with(' ')) words.emplace_back();
        std::vector<std::string> found =
            completionsFor(
                words, [this](const std::string&) { return m_session.get(); }, true,
                wide(m_directory))
                .words;
        if (words.size() == 1)
            for (const char* own : kOwnCommands)
                if (std::string(own).starts_with(words[0])) found.emplace_back(own);
        if (words.front() == "cd" && words.size() == 2) {
            words.front() = "ls";
            found = completionsFor(
                        words, [this](const std::string&) { return m_session.get(); }, true,
                        wide(m_directory))
                        .words;
            std::erase_if(found, [](const std::string& word) { return !word.ends_with('/'); });
        }
        return found;
    }

    const Options& m_options;
    std::unique_ptr<Session> m_session;
    Contents m_saved;
    std::string m_directory = "/";
    bool m_terminal;
    void (*m_onInterrupt)(int) = SIG_DFL;
    bool m_pending = false;
    bool m_warned = false;  ///< that the input ended while changes are pending
    int m_code = kDone;
};

}  // namespace

int runShell(const Options& options) {
    if (options.drawing == "-")
        throw Failure(kUsage,
                      "stdin is where commands are typed; \"moradmin run - -c COMMANDS -o FILE\" "
                      "works on a drawing from there");
    takeStdin("where commands come from");
    return Shell(options).run();
}

}  // namespace mor::tool
