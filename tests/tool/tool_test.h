#pragma once

#include "tests/support/holds.h"
#include "tests/support/process.h"
#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
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
