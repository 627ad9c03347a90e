#include "tools/moradmin/line/complete.h"

#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/line/words.h"
#include "tools/moradmin/picture/views.h"
#include "tools/moradmin/store/paths.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <sstream>
#include <utility>

namespace mor::tool {

namespace {

class Completer {
public:
    Completer(const std::vector<std::string>& words,
              const std::function<Session*(const std::string&)>& open, bool inShell,
              std::wstring directory)
        : m_words(words), m_open(open), m_inShell(inShell), m_directory(std::move(directory)) {}

    Completions run() {
        const std::string last = m_words.empty() ? "" : m_words.back();
        if (m_words.size() <= 1) {
            commandNames(last);
            return std::move(m_found);
        }
        const Command* command = commandNamed(m_words.front());
        if (command == nullptr) return {};
        const std::vector<OptionHelp> options = optionsOf(*command);
        if (const OptionHelp* option = valuedOption(options, m_words[m_words.size() - 2]))
            valueOf(*option, last);
        else if (last.starts_with('-'))
            optionNames(options, last);
        else if (command->name == "help")
            commandNames(last);
        else
            positional(*command, options, last);
        return std::move(m_found);
    }

private:
    void add(const std::string& word, const std::string& begin) {
        if (word.starts_with(begin)) m_found.words.push_back(word);
    }
    /// The parts of a text that names what may be given.
    void words(const std::string& text, char between, const std::string& begin) {
        std::istringstream parts(text);
        for (std::string part; std::getline(parts, part, between);)
            if (!part.starts_with('(')) add(part, begin);
    }
    void commandNames(const std::string& begin) {
        for (const Command& command : commands()) {
            const bool wanted =
                (command.options & kHidden) == 0 &&
                (!m_inShell || ((command.options & kNotInScripts) == 0 && command.run != nullptr));
            if (wanted) add(std::string(command.name), begin);
        }
    }
    static const OptionHelp* valuedOption(const std::vector<OptionHelp>& options,
                                          const std::string& word) {
        const auto found = std::ranges::find_if(options, [&word](const OptionHelp& option) {
            return !option.value.empty() &&
                   std::ranges::find(option.names, word) != option.names.end();
        });
        return found == options.end() ? nullptr : &*found;
    }
    void optionNames(const std::vector<OptionHelp>& options, const std::string& begin) {
        for (const OptionHelp& option : options)
            for (const std::string& name : option.names)
                if (name.starts_with("--")) add(name, begin);
        add("--help", begin);
    }
    /// The words that are no options and none of their values, behind the command.
    [[nodiscard]] std::vector<std::string> plainWords(
        const std::vector<OptionHelp>& options) const {
        std::vector<std::string> plain;
        for (std::size_t i = 1; i + 1 < m_words.size(); ++i) {
            if (valuedOption(options, m_words[i]) != nullptr)
                ++i;
            else if (!m_words[i].starts_with('-') || m_words[i] == "-")
                plain.push_back(m_words[i]);
        }
        return plain;
    }
    Session* session() {
        if (m_inShell) return m_open("");
        const Command* command = commandNamed(m_words.front());
        const std::vector<std::string> plain = plainWords(optionsOf(*command));
        const std::size_t at = (command->options & (kPatternFirst | kFolderFirst)) != 0 ? 1 : 0;
        return plain.size() > at ? m_open(plain[at]) : nullptr;
    }
    void valueOf(const OptionHelp& option, const std::string& begin) {
        const std::string& name = option.names.back();
        if (name == "--release") return words(option.text, ' ', begin);
        if (name == "--type" && option.value == "f|d") return words(option.value, '|', begin);
        if (name != "--in" && name != "--layer" && name != "--layout" && name != "--app") {
            m_found.files =
                option.value == "FILE" || option.value == "DIR" || option.value == "FOLDER";
            return;
        }
        Session* open = session();
        if (open == nullptr) return;
        if (name == "--layout")
            for (const Layout& layout : layoutsOf(open->document())) add(layout.name, begin);
        else if (name == "--app")
            host::forEachSymbol(
                open->document(), L"", "APPID",
                [&](const host::SymbolInfo& symbol) { add(utf8(symbol.symbol), begin); });
        else if (name == "--in")
            host::forEachBlock(open->document(), L"", [&](const host::BlockInfo& block) {
                if (block.reference) add(utf8(block.symbol.symbol), begin);
            });
        else
            host::forEachSymbol(
                open->document(), open->reference(), "LAYER",
                [&](const host::SymbolInfo& symbol) { add(utf8(symbol.qualified), begin); });
    }
    void positional(const Command& command, const std::vector<OptionHelp>& options,
                    const std::string& begin) {
        const bool drawing = m_inShell || !plainWords(options).empty();
        if (!drawing || (command.options & kSeveral) != 0) m_found.files = !m_inShell;
        const bool takesPaths = command.arguments.find("PATH") != std::string_view::npos ||
                                command.arguments.find("PATTERN") != std::string_view::npos ||
                                command.arguments == "FROM TO";
        if (drawing && takesPaths && (m_inShell || begin.starts_with('/'))) storePaths(begin);
        for (const char* file : {"FILE", "DRAWING"})
            if (drawing && command.arguments.find(file) != std::string_view::npos)
                m_found.files = true;
    }
    void storePaths(const std::string& begin) {
        Session* open = session();
        if (open == nullptr || !open->hasDirectories()) return;
        const std::size_t slash = begin.rfind('/');
        const std::string front = slash == std::string::npos ? "" : begin.substr(0, slash + 1);
        const std::wstring written = wide(
            front.size() > 1 && front.ends_with('/') ? front.substr(0, front.size() - 1) : front);
        const std::wstring directory = written.empty()             ? m_directory
                                       : written.starts_with(L'/') ? written
                                                                   : joined(m_directory, written);
        for (const Store::Entry& entry : open->store().entries(directory))
            add(front + utf8(entry.name) + (entry.directory ? "/" : ""), begin);
    }

    const std::vector<std::string>& m_words;
    const std::function<Session*(const std::string&)>& m_open;
    bool m_inShell;
    std::wstring m_directory;
    Completions m_found;
};

}  // namespace

Completions completionsFor(const std::vector<std::string>& words,
                           const std::function<Session*(const std::string& drawing)>& open,
                           bool inShell, const std::wstring& directory) {
    return Completer(words, open, inShell, directory).run();
}

int runComplete(const Options& options) {
    std::unique_ptr<Session> session;
    const auto open = [&session](const std::string& drawing) -> Session* {
        if (drawing == "-") return nullptr;
        try {
            if (!session) session = std::make_unique<Session>(drawing);
        } catch (const Failure&) {
            return nullptr;  // who completes a word wants no messages
        }
        return session.get();
    };
    std::vector<std::string> words = options.arguments;
    if (words.size() == 1 && words.front().starts_with('-')) {
        for (const std::string general : {"--help", "--json", "--version"})
            if (general.starts_with(words.front())) std::cout << general << "\n";
        return kDone;
    }
    if (words.size() > 1 && words.front().starts_with('-')) {
        words = commandFirst(std::move(words), valuedOptions());
        if (std::equal(words.begin() + 1, words.end(), options.arguments.begin()))
            words.resize(1);  // the command itself is what is to be completed
    }
    const Completions found = completionsFor(words, open);
    for (const std::string& word : found.words) std::cout << word << "\n";
    if (found.files) std::cout << ":files\n";
    return kDone;
}

}  // namespace mor::tool
