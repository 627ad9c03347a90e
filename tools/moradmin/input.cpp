#include "tools/moradmin/input.h"

#include "host/host.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/running/progress.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <vector>

namespace mor::tool {

namespace {

const std::string kStdin = "the input";
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

std::string s_stdinUse;  ///< empty as long as nobody wants it

}  // namespace

void takeStdin(const std::string& use) {
    if (!s_stdinUse.empty() && s_stdinUse != use)
        throw Failure(kUsage, "stdin is " + s_stdinUse + "; " + use + " comes from a file then");
    s_stdinUse = use;
}

std::string readInput(const std::string& name, const std::string& use) {
    if (name == "-") {
        takeStdin(use);
        Progress::pause();  // it is others who take their time now, perhaps to type
        static const std::string kept = readAll(std::cin, kStdin);  // a command may be run again
        nowDoing("");
        return kept;
    }
    if (name.empty()) throw Failure(kUsage, "the name of a file is wanted, or - for stdin");
    std::error_code code;
    if (std::filesystem::is_directory(name, code))
        throw Failure(kUsage, name + ": is a directory; a file or - for stdin is wanted", name);
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        const bool there = std::filesystem::exists(name, code);
        throw Failure(kUsage, name + (there ? ": cannot be read" : ": there is no such file"),
                      name);
    }
    return readAll(file, name);
}

std::string readText(const std::string& name) {
    std::string text = readInput(name);
    if (!host::fromUtf8(text))
        throw Failure(kUsage, (name == "-" ? kStdin : name) + ": is not UTF-8; convert it first",
                      name);
    return text;
}

}  // namespace mor::tool
