#pragma once

#include "tests/support/run_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace mor::test {

/// The folder of the running test alone; made when it is not there yet.
[[nodiscard]] inline std::filesystem::path testFolder() {
    static const RunFolder s_run(testing::TempDir());
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string{test->test_suite_name()} + "_" + test->name();
    std::ranges::replace(name, '/', '_');  // of parameters
    std::filesystem::create_directories(s_run.path() / name);
    return s_run.path() / name;
}

}  // namespace mor::test
