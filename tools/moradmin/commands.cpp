#include "tools/moradmin/commands.h"

#include <array>

namespace mor::tool {

namespace {

constexpr int kMany = 100000;

constexpr std::string_view kPathHelp = "a path such as /cfg/user";

constexpr std::array kCommands = {
    Command{"new", "make the smallest valid drawing", "", "", 0, 0, kNew, nullptr, runNew},
    Command{"info", "what kind of drawing it is and what its store holds", "", "", 0, 0,
            kJson | kInside, runInfo},
    Command{"put", "store a value under a path: LISP text, or with --string a text as it stands",
            "PATH [VALUE]",
            "a path such as /cfg/user/x, and LISP text such as 42 or '(1 2 \"x\")'; - is stdin", 1,
            2, kChanging | kPutting | kInside, runPut},
    Command{"cat", "print the values of files", "PATH", "paths such as /cfg/user/x", 1, kMany,
            kJson | kRaw | kInside, runCat},
    Command{"ls", "list a directory, in stored order", "PATH",
            "a directory or file, / when left out", 0, 1, kJson | kListing | kInside, runLs},
    Command{"tree", "draw a directory and everything below it", "PATH",
            "a directory, / when left out", 0, 1, kInside, runTree},
    Command{"dir", "the library's own listing, character for character", "PATH",
            "a directory or file, / when left out", 0, 1, kRecursive | kInside, runDir},
    Command{"find", "files whose paths match a pattern, part by part: /cfg/*/x", "PATTERN",
            "# a digit, @ a letter, * any run, ? one character, [...] one of, ~ not", 1, 1,
            kJson | kValues | kInside, runFind},
    Command{"df", "used and free bytes and entries of every directory", "", "", 0, 0,
            kJson | kInside, runDf},
    Command{"rm", "remove files, with -r directories", "PATH", "paths such as /cfg/user/x", 1,
            kMany, kChanging | kRemoving | kInside, runRm},
    Command{"cp", "copy a file or directory: DRAWING FROM TO, or A.dxf:/FROM B.dxf:/TO", "FROM TO",
            kPathHelp, 1, 2, kChanging | kInside, nullptr, runCp},
    Command{"mv", "move a file or directory, as cp copies it", "FROM TO", kPathHelp, 1, 2,
            kChanging | kInside, nullptr, runMv},
    Command{"dump", "print a directory and everything below it as JSON", "PATH",
            "a directory, / when left out", 0, 1, kInside, runDump},
    Command{"load", "store what dump printed", "FILE", "the JSON; - or nothing is stdin", 0, 1,
            kChanging | kReplace | kInside, runLoad},
    Command{"diff", "what the second drawing's store has added, removed and changed",
            "DRAWING [PATH]", "the other drawing, and a directory", 1, 2, kJson, nullptr, runDiff},
    Command{"check", "find damage in stores; changes nothing", "DRAWING", "more drawings", 0, kMany,
            kJson, nullptr, runCheck},
    Command{"verify", "prove that a save keeps every byte that nobody changed", "DRAWING",
            "more drawings", 0, kMany, kJson, nullptr, runVerify},
    Command{"xrefs", "list the external references of drawings", "DRAWING", "more drawings", 0,
            kMany, kJson | kReferences, nullptr, runXrefs},
    Command{"layers", "list layers: as shown, as the drawing and as the reference have them", "",
            "", 0, 0, kJson | kInside, runLayers},
    Command{"blocks", "list block definitions, those of references too", "", "", 0, 0,
            kJson | kInside | kBlocks, runBlocks},
    Command{"entities", "list entities: handle, type, layer, space", "", "", 0, 0,
            kJson | kInside | kLayers | kWalking, runEntities},
    Command{"entity", "print the groups and attributes of one record", "HANDLE",
            "its handle, such as 1A2F", 1, 1, kJson | kInside, runEntity},
    Command{"point", "carry a point of a reference into the drawing", "X Y [Z]",
            "coordinates in the referenced drawing", 2, 3, kJson | kInside, runPoint},
    Command{"matrix", "how a reference is placed: four rows, column vectors, translation last", "",
            "", 0, 0, kJson | kInside, runMatrix},
    Command{"layouts", "list model space and the sheets of paper", "", "", 0, 0, kJson, runLayouts},
    Command{"draw", "draw the plan view as SVG, PNG or PDF, references in their places", "", "", 0,
            0, kJson | kInside | kLayers | kDrawing, runDraw},
    Command{"repair", "mend a damaged store without losing a value", "", "", 0, 0,
            kChanging | kRepairing | kYes | kInside, runRepair},
    Command{"wipe", "remove the store: all directories and files", "", "", 0, 0,
            kChanging | kExtended | kYes | kInside, runWipe},
    Command{"run", "many commands on one drawing: one load, one save, all or nothing", "FILE",
            "a script, one command a line without the drawing; - is stdin", 0, 1,
            kChanging | kScript | kInside, runRun},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace mor::tool
