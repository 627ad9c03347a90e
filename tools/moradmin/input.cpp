#include "tools/moradmin/input.h"

#include "tools/moradmin/failure.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace mor::tool {

std::string readInput(const std::string& name) {
    if (name == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    std::error_code code;
    if (std::filesystem::is_directory(name, code))
        throw Failure(kUsage, name + ": is a directory; a file or - for stdin is wanted", name);
    std::ifstream file(name, std::ios::binary);
    std::string text;
    if (file) text.assign(std::istreambuf_iterator<char>(file), {});
    if (!file || file.bad()) throw Failure(kUsage, name + ": cannot be read", name);
    return text;
}

}  // namespace mor::tool
