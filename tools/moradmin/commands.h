#pragma once

#include "tools/moradmin/options.h"
#include "tools/moradmin/session.h"

#include <functional>
#include <span>
#include <string>
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
    kPutting = 64,
    kRecursive = 128,
    kRemoving = 256,
    kYes = 512,
    kExtended = 1024,
    kReplace = 2048,
    kScript = 4096,
    kRepairing = 8192,
    kInside = 16384,      ///< --in and where references are looked for
    kReferences = 32768,  ///< --tree, --missing, -v
    kLayers = 65536,      ///< --layer
    kWalking = 131072,    ///< --type, --world, --count
    kBlocks = 262144,     ///< --dump
    kDrawing = 524288     ///< -o, --no-xrefs
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
    /// The same for commands that open their drawings themselves.
    int (*runAlone)(const Options& options) = nullptr;
};

[[nodiscard]] std::span<const Command> commands();

/// Makes a drawing.
int runNew(const Options& options);
/// Commands that open several drawings, or save them in an order of their own.
int runCheck(const Options& options);
/// Of two exit codes the one that several drawings end with.
[[nodiscard]] int moreSerious(int a, int b);
/// Visits the drawing and those named behind it. One that fails is reported and does not stop the
/// others; answers the most serious exit code.
int overDrawings(const Options& options, const std::function<int(const std::string&)>& visit);
int runDiff(const Options& options);
int runReferences(const Options& options);
int runCopy(const Options& options);
int runMove(const Options& options);
int runInfo(Session& session, const Options& options);
int runPut(Session& session, const Options& options);
int runCat(Session& session, const Options& options);
int runLayers(Session& session, const Options& options);
int runBlocks(Session& session, const Options& options);
int runEntities(Session& session, const Options& options);
int runEntity(Session& session, const Options& options);
int runPoint(Session& session, const Options& options);
int runMatrix(Session& session, const Options& options);
int runDraw(Session& session, const Options& options);
int runLs(Session& session, const Options& options);
int runFind(Session& session, const Options& options);
int runRm(Session& session, const Options& options);
int runDir(Session& session, const Options& options);
int runTree(Session& session, const Options& options);
int runDump(Session& session, const Options& options);
int runLoad(Session& session, const Options& options);
int runRepair(Session& session, const Options& options);
int runWipe(Session& session, const Options& options);
int runScript(Session& session, const Options& options);
int runDf(Session& session, const Options& options);

}  // namespace mor::tool
