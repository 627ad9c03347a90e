#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace mor::test {

namespace detail {

/// Everything that the tests of one run write; it goes away with the program. Two runs at once do
/// not meet.
class RunFolder {
public:
    RunFolder()
        : m_path(std::filesystem::path{testing::TempDir()} / ("mor_" + std::to_string(::getpid()))),
          m_process(::getpid()) {
        std::filesystem::remove_all(m_path);  // of a run that crashed
    }
    ~RunFolder() {
        std::error_code code;
        if (::getpid() == m_process) std::filesystem::remove_all(m_path, code);
    }
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
    pid_t m_process;
};

}  // namespace detail

/// The folder of the running test alone; made when it is not there yet.
[[nodiscard]] inline std::filesystem::path testFolder() {
    static const detail::RunFolder s_run;
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string{test->test_suite_name()} + "_" + test->name();
    std::ranges::replace(name, '/', '_');  // of parameters
    std::filesystem::create_directories(s_run.path() / name);
    return s_run.path() / name;
}

}  // namespace mor::test
