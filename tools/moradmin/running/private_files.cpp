#include "tools/moradmin/running/private_files.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <unistd.h>

namespace mor::tool {

namespace {

constexpr std::size_t kLongestPath = 4096;
constexpr std::size_t kMostFiles = 4;

/// Plain arrays: a signal handler reads them.
struct Made {
    std::array<char, kLongestPath> folder{};
    std::array<std::array<char, kLongestPath>, kMostFiles> files{};
    volatile std::size_t count = 0;
    std::array<char, kLongestPath> unfinished{};
};
Made s_made;

void makeFolder() {
    const char* where = std::getenv("TMPDIR");
    const std::string name =
        std::string(where == nullptr || *where == '\0' ? "/tmp" : where) + "/moradmin-XXXXXX";
    if (name.size() >= kLongestPath) throw Failure(kUnwritable, "TMPDIR is too long");
    std::array<char, kLongestPath> made{};
    std::memcpy(made.data(), name.c_str(), name.size() + 1);
    if (::mkdtemp(made.data()) == nullptr)
        throw Failure(kUnwritable, name + ": no folder can be made there; set TMPDIR", name);
    s_made.folder = made;
    std::atexit(removePrivateFiles);
}

}  // namespace

std::string privateFile(const std::string& name) {
    if (s_made.folder[0] == '\0') makeFolder();
    std::string path = std::string(s_made.folder.data()) + "/" + name;
    for (std::size_t i = 0; i < s_made.count; ++i)
        if (path == s_made.files[i].data()) return path;
    if (s_made.count == kMostFiles || path.size() >= kLongestPath)
        throw Failure(kUnwritable, path + ": there is no room for it");
    std::memcpy(s_made.files[s_made.count].data(), path.c_str(), path.size() + 1);
    s_made.count = s_made.count + 1;
    return path;
}

void removePrivateFiles() noexcept {
    for (std::size_t i = 0; i < s_made.count; ++i) ::unlink(s_made.files[i].data());
    if (s_made.unfinished[0] != '\0') ::unlink(s_made.unfinished.data());
    if (s_made.folder[0] != '\0') ::rmdir(s_made.folder.data());
}

UnfinishedFile::UnfinishedFile(const std::string& path) {
    if (path.size() < kLongestPath)
        std::memcpy(s_made.unfinished.data(), path.c_str(), path.size() + 1);
}

UnfinishedFile::~UnfinishedFile() { s_made.unfinished[0] = '\0'; }

std::string drawingFile(const std::string& word) {
    if (word != "-") return word;
    static std::string kept;
    if (kept.empty()) {
        const std::string path = privateFile("stdin");
        std::ofstream file(path, std::ios::binary);
        file << readInput("-", kStdinDrawing);
        if (!file.flush()) throw Failure(kUnwritable, path + ": cannot be written", path);
        kept = path;
    }
    return kept;
}

void copyToOutput(const std::string& file) {
    std::ifstream bytes(file, std::ios::binary);
    std::cout << bytes.rdbuf();
    std::cout.flush();
    if (!bytes || !std::cout) throw Failure(kUnwritable, "the output cannot be written");
}

}  // namespace mor::tool
