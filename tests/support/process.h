#pragma once

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace mor::test {

[[nodiscard]] inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

inline void writeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream file{path, std::ios::binary | std::ios::trunc};
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// What a process answered.
struct Outcome {
    int code = -1;  ///< 128 + the signal's number when one ended it
    std::string out;
    std::string err;
};

/// Runs a program to its end with `input` on stdin; the files that catch its output lie in
/// `folder`.
[[nodiscard]] inline Outcome runProgram(const std::vector<std::string>& words,
                                        const std::filesystem::path& folder,
                                        std::string_view input = {}) {
    const std::filesystem::path in = folder / ".stdin";
    const std::filesystem::path out = folder / ".stdout";
    const std::filesystem::path err = folder / ".stderr";
    writeFile(in, input);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open(in.c_str(), O_RDONLY), STDIN_FILENO);
        ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
        ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    Outcome outcome;
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return outcome;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.out = readFile(out);
    outcome.err = readFile(err);
    for (const auto& file : {in, out, err}) std::filesystem::remove(file);
    return outcome;
}

}  // namespace mor::test
