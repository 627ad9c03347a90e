#pragma once

#include "tools/moradmin/options.h"
#include "tools/moradmin/session.h"

#include <span>
#include <string_view>

namespace mor::tool {

/// Groups of options that a command takes.
enum Option : unsigned {
    kJson = 1,
    kChanging = 2,  ///< --dry-run, --no-backup, -o
    kNew = 4,
    kListing = 8,
    kValues = 16,
    kRaw = 32,
    kPutting = 64
};

/// One row of the command table, from which the command line, help and documentation come.
struct Command {
    std::string_view name;
    std::string_view help;
    std::string_view arguments;  ///< their name in the help; empty when there are none
    std::string_view argumentHelp;
    int least = 0;
    int most = 0;
    unsigned options = 0;
    /// Answers the exit code; throws Failure. What it changed is saved when the code is 0.
    int (*run)(Session& session, const Options& options) = nullptr;
};

[[nodiscard]] std::span<const Command> commands();

/// Makes a drawing: the one command that opens none.
int runNew(const Options& options);
int runInfo(Session& session, const Options& options);
int runPut(Session& session, const Options& options);
int runCat(Session& session, const Options& options);
int runLs(Session& session, const Options& options);
int runFind(Session& session, const Options& options);
int runRm(Session& session, const Options& options);
int runDf(Session& session, const Options& options);

}  // namespace mor::tool
