#include "tools/moradmin/commands.h"

#include <array>

namespace mor::tool {

namespace {

constexpr int kMany = 100000;

constexpr std::array<Command, 8> kCommands = {{
    {"new", "make the smallest valid drawing", "", "", 0, 0, kNew, nullptr},
    {"info", "what kind of drawing it is and what its store holds", "", "", 0, 0, kJson, runInfo},
    {"put", "store a value under a path: LISP text, --string TEXT, --file F or - for stdin",
     "PATH [VALUE]", "a path such as /cfg/user/x, and LISP text such as 42 or '(1 2 \"x\")'", 1, 2,
     kChanging | kPutting, runPut},
    {"cat", "print the values of files", "PATH", "paths such as /cfg/user/x", 1, kMany,
     kJson | kRaw, runCat},
    {"ls", "list a directory, in stored order", "PATH", "a directory or file, / when left out", 0,
     1, kJson | kListing, runLs},
    {"find", "files whose paths match a pattern, part by part: /cfg/*/x", "PATTERN",
     "# a digit, @ a letter, * any run, ? one character, [...] one of, ~ not", 1, 1,
     kJson | kValues, runFind},
    {"rm", "remove files", "PATH", "paths such as /cfg/user/x", 1, kMany, kChanging, runRm},
    {"df", "used and free bytes and entries of every directory", "", "", 0, 0, kJson, runDf},
}};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace mor::tool
