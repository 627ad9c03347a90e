#pragma once

#include "tools/moradmin/options.h"
#include "tools/moradmin/session.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// Groups of options that a command takes.
enum Option : std::uint64_t {
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
    kDrawing = 524288,    ///< -o, --no-xrefs
    // What a command takes and where it may stand.
    kSeveral = std::uint64_t{1} << 32U,       ///< any number of drawings and folders
    kPatternFirst = std::uint64_t{1} << 33U,  ///< a pattern in front of the drawings
    kPatternLast = std::uint64_t{1} << 34U,   ///< a pattern behind them
    kStorePaths = std::uint64_t{1} << 35U,    ///< words behind them that begin with / are paths
    kNoDrawing = std::uint64_t{1} << 36U,
    kNotInScripts = std::uint64_t{1} << 37U,
    kTabular = std::uint64_t{1} << 38U,          ///< --header
    kOwnRecords = std::uint64_t{1} << 39U,       ///< --all
    kCopying = std::uint64_t{1} << 40U,          ///< -n
    kDumping = std::uint64_t{1} << 41U,          ///< --text
    kComparing = std::uint64_t{1} << 42U,        ///< --git
    kSearching = std::uint64_t{1} << 43U,        ///< -i, -F
    kApplication = std::uint64_t{1} << 44U,      ///< --app
    kReferencePlaces = std::uint64_t{1} << 45U,  ///< where references are looked for
    kSpot = std::uint64_t{1} << 46U,             ///< DRAWING may be DRAWING:/PATH
    kFolderFirst = std::uint64_t{1} << 47U,      ///< a folder in front of the drawing
    kManual = std::uint64_t{1} << 48U,           ///< --man
    kHidden = std::uint64_t{1} << 49U,           ///< not listed: for other programs
    kViewing = std::uint64_t{1} << 50U           ///< -o, --no-xrefs, of a page
};

/// As many arguments as anybody gives.
inline constexpr int kMany = 100000;

/// One row of the command table, from which the command line, help and documentation come.
struct Command {
    std::string_view name;
    std::string_view help;
    std::string_view arguments;  ///< their names in the help; empty when there are none
    std::string_view argumentHelp;
    int least = 0;
    int most = 0;
    std::uint64_t options = 0;
    /// Answers the exit code; throws Failure. What it changed is saved when the code is 0, or
    /// kDamaged where it has mended what it could.
    int (*run)(Session& session, const Options& options) = nullptr;
    /// The same for commands that open their drawings themselves; of one that has both `run` is for
    /// scripts.
    int (*runAlone)(const Options& options) = nullptr;
};

[[nodiscard]] std::span<const Command> commands();

// The commands, each in a file of its name or of a pair's. A command answers the exit code and
// throws Failure. One that takes a session works on the drawing that it has open, and what it
// changed is saved by whoever called it; the others open their drawings themselves.

// The drawing as a whole, and the tool itself: at the top.
/// Makes a drawing that is not there yet, and saves it.
int runNew(const Options& options);
/// Runs those of the commands that take a session, each on what the ones before it have done. A
/// line that fails ends it with that line's exit code, and nothing is saved.
int runRun(Session& session, const Options& options);
int runHelp(const Options& options);
/// Prints what the last of the words may go on as, for completion.
int runComplete(const Options& options);
/// Runs what people type, line by line, on one drawing; saves when they say so.
int runShell(const Options& options);
/// One line of a script as options; throws Failure for what cannot stand there.
[[nodiscard]] Options scriptLine(const Session& session, const std::vector<std::string>& words);
/// Runs it on what the ones before it have done; answers its exit code, throws Failure.
int runScriptLine(Session& session, const Options& options);

// The store: store/.
/// Tells of the drawing itself too.
int runInfo(Session& session, const Options& options);
int runPut(Session& session, const Options& options);
int runCat(Session& session, const Options& options);
int runLs(Session& session, const Options& options);
int runTree(Session& session, const Options& options);
int runDir(Session& session, const Options& options);
int runFind(Session& session, const Options& options);
int runDf(Session& session, const Options& options);
int runRm(Session& session, const Options& options);
int runMkdir(Session& session, const Options& options);
int runRmdir(Session& session, const Options& options);
int runDump(Session& session, const Options& options);
int runLoad(Session& session, const Options& options);
/// A file for each value, in a folder that is not there yet, and back.
int runExport(Session& session, const Options& options);
int runImport(Session& session, const Options& options);
int runWipe(Session& session, const Options& options);
/// These save themselves. From one drawing to another the target is saved first, so that a value is
/// never in neither.
int runCp(const Options& options);
int runMv(const Options& options);
/// The same within the drawing of a script.
int runCpWithin(Session& session, const Options& options);
int runMvWithin(Session& session, const Options& options);
/// The first drawing's store against the second's.
int runDiff(const Options& options);
/// The store of a script's drawing, or of another one, against what the script has made of it.
int runDiffWithin(Session& session, const Options& options);

// Damage: damage/.
int runCheck(Session& session, const Options& options);
/// Proves that a save keeps what nobody changed; kDamaged when one would not.
int runVerify(Session& session, const Options& options);
/// kDamaged when damage is left.
int runRepair(Session& session, const Options& options);

// References, and what they and the drawing hold: references/.
int runXrefs(Session& session, const Options& options);
int runLayers(Session& session, const Options& options);
int runBlocks(Session& session, const Options& options);
int runEntities(Session& session, const Options& options);
int runEntity(Session& session, const Options& options);
int runPoint(Session& session, const Options& options);
int runMatrix(Session& session, const Options& options);

// What other programs keep in a drawing: looking/.
/// Texts of all kinds, in references too.
int runGrep(Session& session, const Options& options);
int runHeader(Session& session, const Options& options);
int runDict(Session& session, const Options& options);
int runXdata(Session& session, const Options& options);

// The picture: picture/.
int runDraw(Session& session, const Options& options);
int runView(Session& session, const Options& options);
int runLayouts(Session& session, const Options& options);

}  // namespace mor::tool
