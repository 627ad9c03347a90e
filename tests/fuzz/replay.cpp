#include "tests/support/process.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Gives a target the files of folders, where no fuzzer is linked. What fails aborts.
int main(int count, char** words) {
    std::size_t files = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(words[i])) {
            const std::string bytes = mor::test::readFile(entry.path());
            std::cerr << entry.path().filename().string() << std::endl;  // the last one failed
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++files;
        }
    }
    std::cerr << files << " inputs\n";
    return files > 0 ? 0 : 1;
}
