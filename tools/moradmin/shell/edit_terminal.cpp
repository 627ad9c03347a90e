#include "tools/moradmin/shell/terminal.h"

#include <algorithm>
#include <cstdlib>
#include <histedit.h>
#include <iostream>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kHistoryLines = 1000;

/// Where the history is kept between sessions; empty for nowhere.
std::string historyFile() {
    if (const char* file = std::getenv("MORADMIN_HISTORY")) return file;
    const char* home = std::getenv("HOME");
    return home == nullptr || *home == '\0' ? "" : std::string(home) + "/.moradmin_history";
}

/// Where the last word of a line begins.
std::size_t lastWord(const std::string& line) {
    const std::size_t blank = line.find_last_of(" \t;");
    return blank == std::string::npos ? 0 : blank + 1;
}

/// What all of the words begin with.
std::string commonBegin(const std::vector<std::string>& words) {
    if (words.empty()) return {};
    std::string begin = words.front();
    for (const std::string& word : words) {
        const auto at = std::ranges::mismatch(begin, word);
        begin.resize(static_cast<std::size_t>(at.in1 - begin.begin()));
    }
    return begin;
}

class EditTerminal : public Terminal {
public:
    explicit EditTerminal(Complete completer) : complete(std::move(completer)) {
        history = ::history_init();
        HistEvent event{};
        ::history(history, &event, H_SETSIZE, kHistoryLines);
        ::history(history, &event, H_SETUNIQUE, 1);
        if (const std::string file = historyFile(); !file.empty())
            ::history(history, &event, H_LOAD, file.c_str());
        editor = ::el_init("moradmin", stdin, stdout, stderr);
        ::el_set(editor, EL_CLIENTDATA, this);
        ::el_set(editor, EL_PROMPT, &promptOf);
        ::el_set(editor, EL_EDITOR, "emacs");
        ::el_set(editor, EL_HIST, ::history, history);
        ::el_set(editor, EL_ADDFN, "complete-word", "completes a word", &completeWord);
        ::el_set(editor, EL_ADDFN, "give-up", "gives up the line", &giveUp);
        ::el_set(editor, EL_BIND, "^I", "complete-word", nullptr);
        ::el_set(editor, EL_SETTY, "-d", "-isig", nullptr);  // Ctrl-C is a key like others
        ::el_set(editor, EL_BIND, "^C", "give-up", nullptr);
    }
    ~EditTerminal() override {
        HistEvent event{};
        if (const std::string file = historyFile(); !file.empty())
            ::history(history, &event, H_SAVE, file.c_str());
        ::el_end(editor);
        ::history_end(history);
    }
    EditTerminal(const EditTerminal&) = delete;
    EditTerminal& operator=(const EditTerminal&) = delete;

    [[nodiscard]] std::optional<std::string> read(const std::string& text) override {
        prompt = text;
        wasGivenUp = false;
        int count = 0;
        const char* read = ::el_gets(editor, &count);
        if (wasGivenUp) {
            std::cout << "^C\n" << std::flush;
            return "";
        }
        if (read == nullptr || count <= 0) return std::nullopt;
        std::string line(read, static_cast<std::size_t>(count));
        if (line.ends_with('\n')) line.pop_back();
        return line;
    }
    void remember(const std::string& line) override {
        HistEvent event{};
        ::history(history, &event, H_ENTER, line.c_str());
    }
    [[nodiscard]] bool gaveUp() const override { return wasGivenUp; }

private:
    static EditTerminal& of(EditLine* editor) {
        void* self = nullptr;
        ::el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<EditTerminal*>(self);
    }
    static char* promptOf(EditLine* editor) { return of(editor).prompt.data(); }
    static unsigned char giveUp(EditLine* editor, int /*key*/) {
        const LineInfo* line = ::el_line(editor);
        ::el_cursor(editor, static_cast<int>(line->lastchar - line->cursor));
        ::el_deletestr(editor, static_cast<int>(line->lastchar - line->buffer));
        of(editor).wasGivenUp = true;
        return CC_NEWLINE;
    }
    static unsigned char completeWord(EditLine* editor, int /*key*/) {
        const LineInfo* line = ::el_line(editor);
        const std::string text(line->buffer, line->cursor);
        const std::string word = text.substr(lastWord(text));
        const std::vector<std::string> found = of(editor).complete(text);
        if (found.empty()) return CC_REFRESH_BEEP;
        std::string more = commonBegin(found);
        if (found.size() == 1 && !more.ends_with('/')) more += ' ';
        if (more.size() > word.size()) {
            ::el_insertstr(editor, more.substr(word.size()).c_str());
            return CC_REFRESH;
        }
        std::cout << "\n";
        for (const std::string& one : found) std::cout << one << "  ";
        std::cout << "\n" << std::flush;
        return CC_REDISPLAY;
    }

    Complete complete;
    std::string prompt;
    History* history = nullptr;
    EditLine* editor = nullptr;
    bool wasGivenUp = false;
};

}  // namespace

}  // namespace mor::tool

extern "C" mor::tool::Terminal* moradminTerminal(mor::tool::Complete* complete) {
    return new mor::tool::EditTerminal(std::move(*complete));
}
