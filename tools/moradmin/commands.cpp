#include "tools/moradmin/commands.h"

#include <array>

namespace mor::tool {

namespace {

constexpr std::string_view kPathHelp = "a path such as /cfg/user";
constexpr std::string_view kDirectoryHelp = "a directory, / when left out";

/// What commands have in common that list something of any number of drawings.
constexpr std::uint64_t kLists = kJson | kSeveral | kTabular;

constexpr std::uint64_t kShell = kReferencePlaces | kNotInScripts;

constexpr std::array kCommands = {
    Command{"new", "make the smallest valid drawing", "", "", 0, 0, kJson | kNew | kNotInScripts,
            nullptr, runNew},
    Command{"info", "what kind of drawing it is and what its store holds", "", "", 0, 0,
            kLists | kInside, runInfo},
    Command{"put", "store a value under a path: LISP text, or with --string a text as it stands",
            "PATH [VALUE]",
            "a path such as /cfg/user/x, and LISP text such as 42 or '(1 2 \"x\")'; - is stdin", 1,
            2, kJson | kChanging | kPutting | kInside, runPut},
    Command{"cat", "print the values of files", "PATH...",
            "paths such as /cfg/user/x, or patterns such as '/cfg/*'", 1, kMany,
            kJson | kRaw | kInside, runCat},
    Command{"ls", "list directories, in stored order", "[PATH...]",
            "directories, files or patterns, / when left out", 0, kMany,
            kLists | kListing | kInside | kStorePaths, runLs},
    Command{"tree", "draw a directory and everything below it", "[PATH]", kDirectoryHelp, 0, 1,
            kJson | kInside, runTree},
    Command{"dir", "the library's own listing, character for character", "[PATH]",
            "a directory or file, / when left out", 0, 1, kJson | kRecursive | kInside, runDir},
    Command{"find",
            "files whose paths match a pattern, part by part: /cfg/*/x; ** is any number of parts",
            "PATTERN", "# a digit, @ a letter, * any run, ? one character, [...] one of, ~ not", 1,
            1, kLists | kValues | kInside | kPatternLast, runFind},
    Command{"df", "used and free bytes and entries of every directory", "[PATH]",
            "a directory to begin at, / when left out", 0, 1, kLists | kInside | kStorePaths,
            runDf},
    Command{"rm", "remove files, with -r directories", "PATH...",
            "paths such as /cfg/user/x, or patterns such as '/cfg/*'", 1, kMany,
            kJson | kChanging | kRemoving | kInside, runRm},
    Command{"cp", "copy a file or directory: DRAWING FROM TO, or A.dxf:/FROM B.dxf:/TO", "FROM TO",
            kPathHelp, 1, 2, kJson | kChanging | kInside | kCopying, runCpWithin, runCp},
    Command{"mv", "move a file or directory, as cp copies it", "FROM TO", kPathHelp, 1, 2,
            kJson | kChanging | kInside | kCopying, runMvWithin, runMv},
    Command{"mkdir", "make directories, and those above them", "PATH...", kPathHelp, 1, kMany,
            kJson | kChanging | kInside, runMkdir},
    Command{"rmdir", "remove directories that hold nothing", "PATH...", kPathHelp, 1, kMany,
            kJson | kChanging | kInside, runRmdir},
    Command{"dump", "print a directory and everything below it as JSON, or as text", "[PATH]",
            kDirectoryHelp, 0, 1, kJson | kSeveral | kInside | kStorePaths | kDumping, runDump},
    Command{"load", "store what dump printed", "[FILE]", "the JSON; - or nothing is stdin", 0, 1,
            kJson | kChanging | kReplace | kInside, runLoad},
    Command{"export", "write each value into a file of its own: NAME.txt or NAME.lisp", "FOLDER",
            "a folder that is not there yet; DRAWING:/PATH exports a directory", 1, 1,
            kJson | kInside | kSpot, runExport},
    Command{"import", "store what export wrote, FOLDER first: import FOLDER DRAWING[:PATH]",
            "FOLDER", "a folder of such files; DRAWING:/PATH imports into a directory", 1, 1,
            kJson | kChanging | kReplace | kInside | kSpot | kFolderFirst, runImport},
    Command{"diff", "what the second drawing's store has added, removed and changed",
            "DRAWING [PATH]", "the other drawing, and a directory", 1, 8, kJson | kComparing,
            runDiffWithin, runDiff},
    Command{"check", "find damage in stores; changes nothing", "", "", 0, 0, kJson | kSeveral,
            runCheck},
    Command{"verify", "prove that a save keeps every byte that nobody changed", "", "", 0, 0,
            kJson | kSeveral | kNotInScripts, runVerify},
    Command{"xrefs", "list the external references of drawings", "", "", 0, 0, kLists | kReferences,
            runXrefs},
    Command{"layers", "list layers: as shown, as the drawing and as the reference have them", "",
            "", 0, 0, kLists | kInside | kLayers | kOwnRecords, runLayers},
    Command{"blocks", "list block definitions, those of references too", "", "", 0, 0,
            kLists | kInside | kBlocks | kOwnRecords, runBlocks},
    Command{"entities", "list entities: handle, type, layer, space", "", "", 0, 0,
            kLists | kInside | kLayers | kWalking | kOwnRecords, runEntities},
    Command{"entity", "print the groups and attributes of one record", "HANDLE",
            "its handle, such as 1A2F", 1, 1, kJson | kInside, runEntity},
    Command{"grep",
            "search texts, attributes, names, extended data, dictionaries and stored values",
            "PATTERN", "an extended regular expression, with -F a text as it stands", 1, 1,
            kLists | kPatternFirst | kSearching | kReferencePlaces, runGrep},
    Command{"header", "print the variables of the drawing's header", "[NAME...]",
            "names or patterns such as '$EXT*'; all when left out", 0, kMany, kJson, runHeader},
    Command{"dict", "what other programs keep in dictionaries: list one, print an object", "[PATH]",
            "names such as /ACAD_LAYOUT/Layout1, / when left out", 0, 1, kJson, runDict},
    Command{"xdata", "extended data that other programs keep with records", "[HANDLE...]",
            "handles of records, or --app NAME for all records", 0, kMany, kJson | kApplication,
            runXdata},
    Command{"point", "carry a point of a reference into the drawing", "X Y [Z]",
            "coordinates in the referenced drawing", 2, 3, kJson | kInside, runPoint},
    Command{"matrix", "how a reference is placed: four rows, column vectors, translation last", "",
            "", 0, 0, kJson | kInside, runMatrix},
    Command{"layouts", "list model space and the sheets of paper", "", "", 0, 0, kLists,
            runLayouts},
    Command{"draw", "draw the plan view as SVG, PNG or PDF, references in their places", "", "", 0,
            0, kJson | kInside | kLayers | kDrawing, runDraw},
    Command{"view", "one page to look at a drawing in a browser: picture, layers, store, findings",
            "", "", 0, 0, kJson | kInside | kLayers | kViewing, runView},
    Command{"repair", "mend a damaged store without losing a value", "", "", 0, 0,
            kJson | kChanging | kRepairing | kYes | kInside, runRepair},
    Command{"wipe", "remove the store: all directories and files", "", "", 0, 0,
            kJson | kChanging | kExtended | kYes | kInside, runWipe},
    Command{"run", "many commands on one drawing: one load, one save, all or nothing", "[FILE]",
            "a script, one command a line without the drawing; - is stdin", 0, 1,
            kJson | kChanging | kScript | kInside | kNotInScripts, runRun},
    Command{"shell", "type commands on one drawing; saves with commit, or not at all", "", "", 0, 0,
            kShell, nullptr, runShell},
    Command{"help", "what there is, or all about one command", "[COMMAND]", "its name", 0, 1,
            kJson | kNoDrawing | kNotInScripts | kManual, nullptr, runHelp},
    Command{"complete", "what the last of the words may go on as", "[WORD...]",
            "the words behind moradmin", 0, kMany, kNoDrawing | kNotInScripts | kHidden, nullptr,
            runComplete},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace mor::tool
