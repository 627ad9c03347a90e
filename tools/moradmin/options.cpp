#include "tools/moradmin/options.h"

#include "tools/moradmin/commands.h"
#include "tools/moradmin/line/rules.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kMostJobs = 64;
constexpr double kLongestWait = 86400.0;

/// A check that refuses an empty word; `wanted` says what is to stand there.
auto notEmpty(std::string wanted) {
    return [wanted = std::move(wanted)](const std::string& word) {
        return word.empty() ? wanted + " is wanted" : std::string();
    };
}

void addArguments(CLI::App& app, const Command& command, Options& options) {
    if ((command.options & kNoDrawing) == 0)
        app.add_option(std::string(kDrawingWord), options.drawing, "the drawing, DXF or DWG")
            ->check(notEmpty("the name of a drawing"))
            ->required();
    const bool several = (command.options & kSeveral) != 0;
    // A script has its drawing to compare with.
    const bool comparing = options.inScript && (command.options & kComparing) != 0;
    const int least = comparing ? 0 : command.least;
    if (command.arguments.empty() && !several) return;
    app.add_option(std::string(kArgumentWords), options.arguments,
                   std::string(command.argumentHelp))
        ->expected(least, several ? kMany : command.most)
        ->check([putting = (command.options & (kPutting | kHidden)) != 0](const std::string& word) {
            return std::string(word.empty() && !putting ? "an empty word names nothing" : "");
        })
        ->required(least > 0);
}

void addChangingOptions(CLI::App& app, const Command& command, Options& options);

void addOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kJson)) app.add_flag("--json", options.json, "print JSON, errors on stderr too");
    if (has(kChanging)) addChangingOptions(app, command, options);
    if (has(kNew)) {
        app.add_option("--release", options.release, "R12 R2000 R2004 R2007 R2010 R2013 R2018")
            ->type_name("RELEASE")
            ->capture_default_str();
        app.add_flag("--crlf", options.crlf, "end lines with CR LF");
        app.add_flag("--dry-run", options.dryRun, "do everything but the save");
    }
    if (has(kYes)) app.add_flag("--yes", options.yes, "really do it");
    if (has(kExtended)) {
        app.add_flag("--extended", options.extended,
                     "move entities on the control layer inside blocks to layer 0 too");
        app.add_flag("--all", options.all, "the store's layer and block go too");
    }
    if (has(kManual))
        app.add_option("--man", options.manual, "write the manual pages into a folder")
            ->type_name("FOLDER")
            ->check(notEmpty("the name of a folder"));
    if (has(kScript))
        app.add_option("-c,--command", options.script,
                       "the commands themselves, split by line ends or ;")
            ->type_name("COMMANDS");
    if (has(kComparing))
        app.add_flag("--git", options.git, "called by git, with the words that it gives");
}

void addStoreOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kListing)) {
        app.add_flag("-l,--long", options.longListing, "type, bytes used, room left, name");
        app.add_flag("-R,--recursive", options.recursive, "everything below, with paths");
    }
    if (has(kValues)) {
        app.add_flag("--values", options.values, "print the values too, behind a tab");
        app.add_option("--type", options.kind, "f: files (as without it), d: directories")
            ->type_name("f|d")
            ->check(CLI::IsMember({"f", "d"}));
    }
    if (has(kRecursive)) app.add_flag("-R,--recursive", options.recursive, "the whole subtree");
    if (has(kRemoving))
        app.add_flag("-r,-R,--recursive", options.recursive,
                     "directories too, with everything below");
    if (has(kReplace)) app.add_flag("--replace", options.replace, "remove what is there before");
    if (has(kCopying))
        app.add_flag("-n,--no-clobber", options.keep, "what stands at the target already stays");
    if (has(kDumping)) {
        app.add_flag("--text", options.text,
                     "path, tab and value, sorted; then a line that changes with the drawing");
        app.add_flag("--textconv", options.textconv,
                     "the same for git: what cannot be read is told, exit code 0");
    }
    if (has(kRaw))
        app.add_flag("-r,--raw", options.raw, "print a string's own text and nothing else");
    if (has(kRaw) || has(kPutting))
        app.add_flag("--line", options.line,
                     has(kRaw) ? "with --raw: a line end behind each string"
                               : "with --string: a line end at the end is none of the value");
    if (has(kPutting)) {
        app.add_flag("--string", options.asString, "store the value as one string, as it stands");
        app.add_option("--file", options.fileValue, "read the value from FILE; - is stdin")
            ->type_name("FILE")
            ->check(notEmpty("the name of a file"));
    }
}

void addDrawingOptions(CLI::App& app, Options& options, bool page) {
    PictureOptions& picture = options.picture;
    const auto add = [&app](const char* name, std::string& value, const char* help,
                            const char* type) {
        app.add_option(name, value, help)->type_name(type)->check(notEmpty(type));
    };
    add("-o,--output", options.output,
        page ? "write the page to FILE; - is stdout"
             : "write the picture to FILE, whose name says in which form; - is stdout",
        "FILE");
    add("--layout", picture.layout, "draw that sheet instead of model space", "NAME");
    if (!page) {
        add("--form", picture.form, "svg, png or pdf, where the name does not say", "FORM");
        add("--size", picture.size, "pixels of the longer side, 1000 when left out", "PIXELS");
        add("--scale", picture.scale, "of the paper to the drawing: 1:100 (PDF)", "SCALE");
        add("--window", picture.window, "only that part, in coordinates of the drawing",
            "X1,Y1,X2,Y2");
        add("--background", picture.background, "white, black, grey, transparent, or #rrggbb",
            "COLOUR");
    }
    app.add_flag("--exact-colours", picture.exactColours,
                 "as the drawing has them, whether they can be seen or not");
    app.add_flag("--all", picture.all, "what is not plotted too");
    app.add_flag("--no-xrefs", options.noReferences, "leave out external references");
    app.add_flag("-v,--verbose", options.verbose, "which fonts stand for those of the drawing");
}

void addLookingOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kSearching)) {
        app.add_flag("-i,--ignore-case", options.ignoreCase, "capitals and small letters alike");
        app.add_flag("-F,--fixed-strings", options.fixed, "the pattern is a text as it stands");
    }
    if (has(kApplication))
        app.add_option("--app", options.application, "of all records, those of one application")
            ->type_name("NAME")
            ->check(notEmpty("the name of an application"));
    if (has(kLayers))
        app.add_option("--layer", options.layers,
                       "only on layers that match a wildcard pattern (repeatable; a comma splits)")
            ->type_name("PATTERN")
            ->check(notEmpty("a pattern"))
            ->allow_extra_args(false);
    if (has(kWalking)) {
        app.add_option("--type", options.types, "only entities of these types, as LINE,ARC")
            ->type_name("PATTERN")
            ->check(notEmpty("a pattern"))
            ->allow_extra_args(false);
        app.add_flag("--world", options.world, "the points too, in coordinates of the drawing");
        app.add_flag("--count", options.count, "only how many there are");
        app.add_flag("--deep", options.deep,
                     "what lies in blocks and references too, with points of the drawing");
    }
    if (has(kBlocks))
        app.add_flag("--dump", options.blockDump,
                     "the library's own listing of the blocks of references");
    if (has(kDrawing) || has(kViewing)) addDrawingOptions(app, options, has(kViewing));
}

void addReferenceOptions(CLI::App& app, const Command& command, Options& options) {
    if ((command.options & kInside) != 0)
        app.add_option("--in", options.inside,
                       "look through a reference: its name, or the handle of an insert")
            ->type_name("NAME|HANDLE")
            ->check(notEmpty("a reference's name or the handle of an insert"));
    app.add_option("--xref-path", options.referenceFolders,
                   "look for references in DIR too, DIR/** also below it (repeatable)")
        ->type_name("DIR")
        ->check(notEmpty("the name of a folder"))
        ->allow_extra_args(false);
    app.add_option("--map", options.referenceMappings,
                   "beginning of saved paths and its place here: C:\\proj=/srv/proj")
        ->type_name("FROM=TO")
        ->allow_extra_args(false);
    app.add_option("--xref-root", options.referenceRoot,
                   "read references below DIR only, wherever paths, .. and links lead")
        ->type_name("DIR");
    if ((command.options & kReferences) == 0) return;
    app.add_flag("--tree", options.tree, "draw which drawing refers to which");
    app.add_flag("--missing", options.missing, "only missing ones; exit code 1 when there is one");
    app.add_flag("-v,--verbose", options.verbose, "where each one was looked for");
}

void addRepairOptions(CLI::App& app, Options& options) {
    app.add_flag("--salvage", options.salvage,
                 "rebuild the tree without losing a value (the default)");
    app.add_flag("--library", options.library, "what the library does when it is asked to check");
    app.add_flag("--reset", options.reset, "erase everything and start anew; wants --yes");
}

/// Options of the commands that take many drawings.
void addSeveralOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kTabular))
        app.add_flag("--header", options.header, "headings too where the output is no terminal");
    if (has(kOwnRecords)) {
        app.add_flag("--all", options.all, "what belongs to the store itself too");
        app.add_flag("-v,--verbose", options.verbose, "how much of the store is left out");
    }
    if (!has(kSeveral)) return;
    app.add_flag("-r,--folders", options.folders, "drawings in folders, and in folders below");
    app.add_option("--ext", options.extensions, "what names of drawings end in, within folders")
        ->type_name("ENDING,...")
        ->capture_default_str()
        ->check(notEmpty("an ending"));
    app.add_flag("-H,--with-filename", options.withFilename,
                 "the drawing in front of each line, as for several drawings");
    app.add_flag("-q,--quiet", options.quiet, "no summary, no progress, nothing of what is clean");
    app.add_option("-j,--jobs", options.jobs, "work on N drawings at once")
        ->type_name("N")
        ->check(CLI::Range(1, kMostJobs));
}

void addChangingOptions(CLI::App& app, const Command& command, Options& options) {
    app.add_flag("--dry-run", options.dryRun,
                 "do everything but the save; print what would change");
    app.add_flag("--no-backup", options.noBackup, "do not keep the old file as NAME.bak");
    app.add_option("-o,--output", options.output,
                   "save to FILE instead of the drawing; - is stdout")
        ->type_name("FILE")
        ->check(notEmpty("the name of a file"));
    app.add_flag("--force", options.force, "-o may take the place of another file");
    app.add_option("--wait", options.wait,
                   "so long try again while another process saves the drawing")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, kLongestWait));
    app.add_flag("-v,--verbose", options.verbose, "print what changes");
    app.add_flag("--experimental-dwg", options.experimentalDwg,
                 "you know that no strict judge of DWG was at hand when writing it was tested");
    if (command.run != nullptr && command.runAlone == nullptr)
        app.add_flag("--salvage-drawing", options.salvageDrawing,
                     "of a damaged drawing take what can be read; wants -o FILE");
}

}  // namespace

std::unique_ptr<CLI::App> rulesFor(const Command& command, Options& options) {
    auto app = std::make_unique<CLI::App>(std::string(command.help), std::string(command.name));
    addArguments(*app, command, options);
    addOptions(*app, command, options);
    addStoreOptions(*app, command, options);
    addLookingOptions(*app, command, options);
    addSeveralOptions(*app, command, options);
    if ((command.options & (kInside | kReferences | kReferencePlaces)) != 0)
        addReferenceOptions(*app, command, options);
    if ((command.options & kRepairing) != 0) addRepairOptions(*app, options);
    return app;
}

std::vector<OptionHelp> optionsOf(const Command& command) {
    Options unused;
    const auto app = rulesFor(command, unused);
    std::vector<OptionHelp> all;
    for (const CLI::Option* option : app->get_options()) {
        if (option->get_positional() || option == app->get_help_ptr()) continue;
        OptionHelp help;
        for (const std::string& name : option->get_snames()) help.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames()) help.names.push_back("--" + name);
        if (option->get_expected_max() > 0) help.value = option->get_type_name();
        // The type of checked values carries the check's name behind it.
        help.value = help.value.substr(0, help.value.find(':'));
        help.text = option->get_description();
        if (const std::string preset = option->get_default_str(); !preset.empty())
            help.text += " (" + preset + ")";
        all.push_back(std::move(help));
    }
    return all;
}

std::set<std::string> valuedOptions() {
    std::set<std::string> all;
    for (const Command& command : commands())
        for (const OptionHelp& option : optionsOf(command))
            if (!option.value.empty()) all.insert(option.names.begin(), option.names.end());
    return all;
}

}  // namespace mor::tool
