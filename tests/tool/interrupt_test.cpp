#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace mor::test {
namespace {

/// A running program whose output nobody reads until `finish`.
class Running {
public:
    explicit Running(std::vector<std::string> words) {
        words.insert(words.begin(), MORADMIN_PROGRAM);
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        m_output = ends[0];
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::execv(arguments[0], arguments.data());
            ::_exit(127);
        }
        ::close(ends[1]);
    }
    ~Running() { ::close(m_output); }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    /// Waits for the first output, then presses Ctrl-C.
    void interrupt() {
        char first = '\0';
        EXPECT_EQ(::read(m_output, &first, 1), 1);
        ::kill(m_process, SIGINT);
    }
    /// The exit code; `out` gets what was left of the output.
    int finish(std::string& out) {
        std::array<char, 4096> buffer{};
        for (ssize_t got = 0; (got = ::read(m_output, buffer.data(), buffer.size())) > 0;)
            out.append(buffer.data(), static_cast<std::size_t>(got));
        int status = 0;
        ::waitpid(m_process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    int m_output = -1;
    pid_t m_process = -1;
};

class Interrupts : public ToolTest {
protected:
    /// A store whose listing is longer than what a pipe holds.
    [[nodiscard]] std::string bigStore() const {
        nlohmann::json dump = {{"command", "dump"}, {"schema", 1}, {"path", "/"}};
        for (int i = 0; i < 6; ++i) {
            nlohmann::json entries;
            for (int k = 100; k < 200; ++k)
                entries.push_back({{"name", std::string(120, 'f') + std::to_string(k)},
                                   {"kind", "file"},
                                   {"lisp", "1"}});
            dump["entries"].push_back({{"name", "d" + std::to_string(i)},
                                       {"kind", "directory"},
                                       {"entries", std::move(entries)}});
        }
        const std::string drawing = newDrawing();
        const Outcome load = run({"load", drawing, "--no-backup"}, dump.dump());
        EXPECT_EQ(load.code, 0) << load.err;
        return drawing;
    }
};

TEST_F(Interrupts, EndAListingBeforeItsNextEntry) {
    const std::string drawing = bigStore();
    for (const char* command : {"dir", "ls"}) {
        const std::size_t whole = run({command, "-R", drawing}).out.size();
        ASSERT_GT(whole, 70000u);
        Running listing({command, "-R", drawing});
        listing.interrupt();
        std::string out;
        EXPECT_EQ(listing.finish(out), 130);
        EXPECT_TRUE(command == std::string_view{"ls"} || out.size() + 1 < whole);
    }
}

TEST_F(Interrupts, EndWorkOnManyDrawings) {
    const std::string drawing = bigStore();
    Running listing({"ls", "-R", "-j", "2", drawing, drawing, drawing});
    listing.interrupt();
    std::string out;
    EXPECT_EQ(listing.finish(out), 130);
}

}  // namespace
}  // namespace mor::test
