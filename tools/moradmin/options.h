#pragma once

#include "host/host.h"

#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// How a picture is to be; texts as they were given.
struct PictureOptions {
    std::string form;
    std::string size;
    std::string scale;
    std::string background = "white";
    std::string window;
    std::string layout;
    bool exactColours = false;
    bool all = false;  ///< what is not plotted too
};

/// What the command line says.
struct Options {
    std::string command;
    std::string drawing;                 ///< the one that is worked on; "-" is stdin
    std::vector<std::string> drawings;   ///< all that are named, folders too
    std::vector<std::string> arguments;  ///< the other words: paths, a pattern, a value
    bool inScript = false;               ///< of a line of a script, or of the shell

    bool json = false;
    bool header = false;  ///< --header: headings also where the output is no terminal
    bool quiet = false;
    bool all = false;      ///< --all: what is the store's own too
    bool folders = false;  ///< -r: drawings in folders and below
    std::string extensions = "dxf,dwg";
    bool withFilename = false;
    int jobs = 1;
    bool dryRun = false;
    bool noBackup = false;
    bool force = false;            ///< --force: -o may take the place of another file
    double wait = 0.0;             ///< --wait: seconds
    bool experimentalDwg = false;  ///< --experimental-dwg: no need to be told, nor to be kept safe
    std::string output;
    std::optional<host::FileState> outputBefore;  ///< what stood there when the command began

    std::string release = "R2018";
    std::string kind;  ///< find --type: "f" or "d"
    bool crlf = false;
    bool longListing = false;
    bool recursive = false;
    bool values = false;
    bool raw = false;
    bool line = false;      ///< --line: a line end that belongs to no value
    bool keep = false;      ///< -n: what stands at the target stays
    bool text = false;      ///< dump --text
    bool textconv = false;  ///< dump --textconv: the same, for git
    bool git = false;       ///< diff --git
    bool yes = false;       ///< --yes: really wipe or reset
    bool extended = false;  ///< wipe: entities on the control layer inside blocks too
    bool salvage = false;
    bool salvageDrawing = false;  ///< --salvage-drawing: of a damaged one, what can be read
    bool library = false;
    bool reset = false;
    bool replace = false;
    std::string inside;  ///< --in: a reference's name or the handle of its insert
    std::vector<std::string> referenceFolders;
    std::vector<std::string> referenceMappings;
    std::optional<std::string> referenceRoot;  ///< --xref-root: the folder they are confined to
    bool tree = false;
    bool missing = false;
    bool verbose = false;
    std::vector<std::string> layers;  ///< --layer: patterns
    std::vector<std::string> types;   ///< --type: patterns
    PictureOptions picture;
    std::optional<std::string> script;  ///< run: the commands themselves
    std::optional<std::string> fileValue;
    std::string application;  ///< xdata --app
    std::string manual;       ///< help --man: a folder
    bool world = false;
    bool count = false;
    bool deep = false;  ///< --deep: what lies in blocks and references too
    bool blockDump = false;
    bool noReferences = false;
    bool asString = false;
    bool ignoreCase = false;
    bool fixed = false;  ///< --fixed-strings

    /// The first argument, or `otherwise` when there is none.
    [[nodiscard]] std::string argument(const std::string& otherwise = {}) const {
        return arguments.empty() ? otherwise : arguments.front();
    }
};

/// What reading the command line came to: options to run with, or an exit code after help, version
/// or an error was printed.
struct ParsedLine {
    Options options;
    std::optional<int> exitCode;
};

[[nodiscard]] ParsedLine parseCommandLine(int count, char** words);

/// The words of one line of a script, its drawing put in. Throws Failure for what is no command.
[[nodiscard]] Options parseScriptLine(const std::vector<std::string>& words,
                                      const std::string& drawing);

}  // namespace mor::tool
