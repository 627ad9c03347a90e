#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace mor::test {

/// Everything that the tests of one run write; it goes away with the program. Two runs at once do
/// not meet.
class RunFolder {
public:
    explicit RunFolder(const std::filesystem::path& parent)
        : m_path(parent / ("mor_" + std::to_string(::getpid()))), m_process(::getpid()) {
        std::filesystem::remove_all(m_path);  // of a run that crashed
        std::filesystem::create_directories(m_path);
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

}  // namespace mor::test
