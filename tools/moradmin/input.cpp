#include "tools/moradmin/input.h"

#include "tools/moradmin/failure.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kMostInput = std::size_t{512} << 20;

std::string readAll(std::istream& stream, const std::string& name) {
    std::string text;
    std::vector<char> piece(std::size_t{1} << 16);
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())) ||
           stream.gcount() > 0) {
        text.append(piece.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > kMostInput)
            throw Failure(kUsage, name + ": has more than 512 MB; a value or script is wanted",
                          name);
    }
    if (stream.bad()) throw Failure(kUsage, name + ": cannot be read", name);
    return text;
}

}  // namespace

std::string readInput(const std::string& name) {
    if (name == "-") return readAll(std::cin, "the input");
    if (name.empty()) throw Failure(kUsage, "the name of a file is wanted, or - for stdin");
    std::error_code code;
    if (std::filesystem::is_directory(name, code))
        throw Failure(kUsage, name + ": is a directory; a file or - for stdin is wanted", name);
    std::ifstream file(name, std::ios::binary);
    if (!file) throw Failure(kUsage, name + ": cannot be read", name);
    return readAll(file, name);
}

}  // namespace mor::tool
