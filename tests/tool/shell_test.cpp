#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <thread>

namespace mor::test {
namespace {

class Shell : public ToolTest {};

TEST_F(Shell, SpeaksTheLanguageOfScriptsAndSavesOnCommit) {
    filledDrawing({{"/cfg/user/x", "1"}});
    const std::string bytes = readFile(file("d.dxf"));
    const Outcome lost = call("shell D", "put /cfg/y 2\nexit\ndiff\n");
    EXPECT_EQ(lost.out, "+ /cfg/y\t2\n");
    EXPECT_TRUE(holds(lost.err, "changes are pending: commit saves them"));
    EXPECT_EQ(readFile(file("d.dxf")), bytes);
    const Outcome kept =
        call("shell D",
             "cd cfg\nput l (1\n 2)\nls\ncat user/x ../cfg/l; cd user; pwd\n"
             "nosuch\nput ../x\nrm x\nrollback\nput /cfg/z 3\ncommit\ndiff\nexit\n");
    EXPECT_EQ(kept.out, "user/\nl\n1\n(1 2)\n/cfg/user\n");
    EXPECT_TRUE(holds(kept.err, "\"nosuch\" is not a command"));
    EXPECT_EQ(kept.code, 0);
    EXPECT_EQ(call("find D /**/*").out, "/cfg/user/x\n/cfg/z\n");
    EXPECT_EQ(call("shell D", "put /cfg/q 1\nexit -f\n").code, 0);
    EXPECT_EQ(call("cat D /cfg/q").code, 6);
    const Outcome open = call("shell D", "put /cfg/q (1\n 2");
    EXPECT_EQ(open.code, 2);
    EXPECT_TRUE(holds(open.err, "the list that begins here is not closed"));
    EXPECT_TRUE(holds(call("shell D", "put /cfg/q -\n").err, "stdin is where commands come from"));
    EXPECT_TRUE(holds(call("shell -", bytes).err, "moradmin run - -c COMMANDS"));
    EXPECT_TRUE(holds(call("shell D --json").err, "which use \\\"moradmin run\\\""));
}

/// A terminal that tmux keeps; `keys` are typed, `shown` waits until a text is on its screen.
class Terminal : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        if (tmux({"-V"}).code != 0) GTEST_SKIP() << "tmux is not installed";
        filledDrawing({{"/cfg/user/x", "(1 2)"}, {"/cfg/scale", "0.5"}});
        writeFile(
            file("rc"),
            "PS1='$ '\nPATH=" + std::filesystem::path(MORADMIN_PROGRAM).parent_path().string() +
                ":$PATH\nexport MORADMIN_HISTORY=\n. " + MORADMIN_COMPLETION + "\n");
        EXPECT_EQ(tmux({"-f", "/dev/null", "new-session", "-d", "-x", "120", "-y", "40", "-c",
                        folder().string(), "bash --noprofile --rcfile " + file("rc") + " -i"})
                      .code,
                  0);
        EXPECT_TRUE(shown("$"));
    }
    void TearDown() override {
        static_cast<void>(tmux({"kill-server"}));
        ToolTest::TearDown();
    }
    Outcome tmux(std::vector<std::string> words) const {
        words.insert(words.begin(),
                     {"/usr/bin/env", "-u", "TMUX", "TERM=screen", "tmux", "-S", file("socket")});
        return runProgram(words, folder());
    }
    void keys(const std::vector<std::string>& typed) const {
        std::vector<std::string> words = {"send-keys"};
        words.insert(words.end(), typed.begin(), typed.end());
        EXPECT_EQ(tmux(words).code, 0);
    }
    /// Presses a key again and again until a text is on the screen.
    void pressUntil(const std::string& key, const std::string& text) const {
        for (int i = 0; i < 100; ++i) {
            if (tmux({"capture-pane", "-p"}).out.find(text) != std::string::npos) return;
            keys({key});
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        ADD_FAILURE() << "not \"" << text << "\" in\n" << tmux({"capture-pane", "-p"}).out;
    }
    [[nodiscard]] bool shown(const std::string& text) const {
        for (int i = 0; i < 200; ++i) {
            if (tmux({"capture-pane", "-p"}).out.find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ADD_FAILURE() << "not \"" << text << "\" in\n" << tmux({"capture-pane", "-p"}).out;
        return false;
    }
};

TEST_F(Terminal, EditsCompletesAndSurvivesCtrlC) {
    keys({"moradmin shell d.dxf", "Enter"});
    ASSERT_TRUE(shown("d.dxf:/>"));
    keys({"cd cf", "Tab", "Enter"});
    EXPECT_TRUE(shown("d.dxf:/cfg>"));
    keys({"cat us", "Tab", "Tab", "Enter"});
    EXPECT_TRUE(shown("cat user/x"));
    EXPECT_TRUE(shown("\n(1 2)"));
    keys({"rm -r /", "C-c"});
    EXPECT_TRUE(shown("rm -r /^C\nd.dxf:/cfg>"));
    keys({"put n (1", "Enter"});
    EXPECT_TRUE(shown("\n..."));
    keys({"2)", "Enter"});
    EXPECT_TRUE(shown("d.dxf:/cfg*>"));
    keys({"Up", "Home", "C-k", "diff", "Enter"});
    EXPECT_TRUE(shown("+ /cfg/n"));
    keys({"commit", "Enter"});
    EXPECT_TRUE(shown("commit\nd.dxf:/cfg>"));
    // It blocks as long as nobody reads from the pipe.
    ASSERT_EQ(::mkfifo(file("pipe.svg").c_str(), 0600), 0);
    keys({"put n 7", "Enter", "C-l", "draw -o pipe.svg", "Enter"});
    EXPECT_TRUE(shown("draw -o pipe.svg"));
    pressUntil("C-c", "\nd.dxf:/cfg*>");
    keys({"C-l", "diff", "Enter"});
    EXPECT_TRUE(shown("~ /cfg/n"));
    keys({"C-d"});
    EXPECT_TRUE(shown("unsaved\nd.dxf:/cfg*>"));
    keys({"rollback", "Enter", "exit", "Enter"});
    EXPECT_TRUE(shown("exit\n$"));
    keys({"moradmin cat d.dxf /cfg/n", "Enter"});
    EXPECT_TRUE(shown("$ moradmin cat d.dxf /cfg/n\n(1 2)"));
}

TEST_F(Terminal, SaysWhatTakesLongAndEndsIt) {
    ASSERT_EQ(::mkfifo(file("pipe.svg").c_str(), 0600), 0);
    keys({"moradmin draw d.dxf -o pipe.svg", "Enter"});
    EXPECT_TRUE(shown("\ndraw d.dxf  2 s"));
    keys({"C-c", "echo ended with $?", "Enter"});
    EXPECT_TRUE(shown("\nended with 130"));
}

TEST_F(Terminal, OfBashCompletesCommandsDrawingsAndPaths) {
    keys({"moradmin ca", "Tab", "d.d", "Tab", "/cfg/us", "Tab"});
    EXPECT_TRUE(shown("$ moradmin cat d.dxf /cfg/user/"));
    keys({"Tab", "Enter"});
    EXPECT_TRUE(shown("\n(1 2)"));
    keys({"moradmin entities d.dxf --lay", "Tab", "MOR", "Tab"});
    EXPECT_TRUE(shown("--layer MOR_CONTROL_LAYER"));
    EXPECT_EQ(call("complete -- rm @d.dxf /cfg/s").out, "/cfg/scale\n");
    const std::pair<const char*, const char*> rows[] = {
        {"put --dry", "--dry-run\n"},
        {"--js", "--json\n"},
        {"--json ca", "cat\n"},
        {"-o x rmd", "rmdir\n"},
        {"diff @d.dxf ", ":files\n"},
        {"find @d.dxf --type d", "d\n"},
        {"new x.dxf --release R201", "R2010\nR2013\nR2018\n"},
        {"draw @d.dxf --layout Mo", "Model\n"},
        {"xdata @d.dxf --app MOR", "MOR_ATTRIBUTES\n"}};
    for (const auto& [line, out] : rows) {
        std::vector<std::string> all = words(line);
        all.insert(all.begin(), {"complete", "--"});
        if (std::string_view(line).ends_with(' ')) all.emplace_back();
        EXPECT_EQ(run(all).out, out) << line;
    }
}

}  // namespace
}  // namespace mor::test
