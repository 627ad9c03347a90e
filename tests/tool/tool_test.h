#pragma once

#include "tests/support/dxf_drawing.h"
#include "tests/support/dxf_records.h"
#include "tests/support/holds.h"
#include "tests/support/process.h"
#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::test {

/// A test with a folder of its own in which the program runs on drawings.
class ToolTest : public ::testing::Test {
protected:
    void SetUp() override { m_folder = testFolder(); }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    [[nodiscard]] const std::filesystem::path& folder() const { return m_folder; }
    [[nodiscard]] std::string file(const std::string& name) const {
        return (m_folder / name).string();
    }
    /// Runs `moradmin WORD...`.
    [[nodiscard]] Outcome run(std::vector<std::string> words, std::string_view input = {}) const {
        words.insert(words.begin(), MORADMIN_PROGRAM);
        return runProgram(words, m_folder, input);
    }
    /// The words of a command line, those with blanks in ''. @NAME stands for the file of that
    /// name, D for @d.dxf.
    [[nodiscard]] std::vector<std::string> words(const std::string& line) const {
        std::vector<std::string> all;
        std::istringstream text{line};
        for (std::string word; text >> std::quoted(word, '\'', '\1');) {
            if (word == "D") word = "@d.dxf";
            all.push_back(word.starts_with('@') ? file(word.substr(1)) : word);
        }
        return all;
    }
    /// Runs `moradmin LINE`.
    [[nodiscard]] Outcome call(const std::string& line, std::string_view input = {}) const {
        return run(words(line), input);
    }
    /// Runs `moradmin WORD...` and does `what` at its `nth` call (0: at every one) of a system
    /// call: "fail", "signal:NUMBER", "append:FILE" or "replace:FILE".
    [[nodiscard]] Outcome runInjected(const std::string& call, int nth, const std::string& what,
                                      std::vector<std::string> words) const {
        words.insert(words.begin(),
                     {"/usr/bin/env", std::string("LD_PRELOAD=") + MORADMIN_INJECTED,
                      "ASAN_OPTIONS=verify_asan_link_order=0", "INJECT_CALL=" + call,
                      "INJECT_AT=" + std::to_string(nth), "INJECT_DO=" + what, MORADMIN_PROGRAM});
        return runProgram(words, m_folder);
    }
    /// Runs the program for each of the calls; all answer `code`, and `err` stands in what they
    /// say.
    void expectCode(int code, const std::vector<std::vector<std::string>>& calls,
                    const std::string& err = "") const {
        for (const std::vector<std::string>& words : calls) {
            std::string all;
            for (const std::string& word : words) all += word.substr(0, 80) + " ";
            const Outcome outcome = run(words);
            EXPECT_EQ(outcome.code, code) << all << outcome.err;
            EXPECT_TRUE(holds(outcome.err, err)) << all;
            EXPECT_TRUE(code < 2 || (outcome.out.empty() && !outcome.err.empty())) << all;
        }
    }
    /// The same for command lines, a semicolon between them.
    void expectCode(int code, const std::string& lines, const std::string& err = "") const {
        std::istringstream text{lines};
        for (std::string line; std::getline(text, line, ';');) expectCode(code, {words(line)}, err);
    }
    /// Exchanges the only place where the groups `old` stand in a drawing.
    static void exchange(const std::string& drawing, const std::string& old,
                         const std::string& fresh) {
        std::string text;
        for (const DxfRecord& record : splitDxf(readFile(drawing)).records)
            text += record.text() + "|";
        const std::size_t place = text.find(old);
        ASSERT_NE(place, std::string::npos) << old;
        ASSERT_EQ(text.find(old, place + 1), std::string::npos) << old;
        writeFile(drawing, dxfText(text.replace(place, old.size(), fresh)));
    }
    /// A new drawing of that release; answers its path.
    std::string newDrawing(const std::string& name = "d.dxf",
                           const std::string& release = "R2018") const {
        const Outcome made = run({"new", file(name), "--release", release});
        EXPECT_EQ(made.code, 0) << made.err;
        return file(name);
    }
    /// A new drawing with values put into it, `{path, LISP text}` each.
    std::string filledDrawing(const std::vector<std::pair<std::string, std::string>>& values,
                              const std::string& name = "d.dxf") const {
        std::string drawing = newDrawing(name);
        for (const auto& [path, value] : values) {
            const Outcome put = run({"put", drawing, path, value, "--no-backup"});
            EXPECT_EQ(put.code, 0) << put.err;
        }
        return drawing;
    }
    /// The names of the folder's files, sorted, a blank between them.
    [[nodiscard]] std::string names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        std::string all;
        for (const std::string& name : found) all += (all.empty() ? "" : " ") + name;
        return all;
    }

private:
    std::filesystem::path m_folder;
};

}  // namespace mor::test
