#include "tools/moradmin/options.h"

#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/shown_text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <string_view>
#include <utility>

namespace mor::tool {

namespace {

constexpr std::string_view kVersion = MORADMIN_VERSION;

/// Stands before a word such as -5 while the words are sorted, so that it is not taken for an
/// option, and before one such as [a,b], so that it is not taken for a list of words.
constexpr char kMark = '\x01';
constexpr std::string_view kStringOption = "--string";
constexpr std::string_view kLongOption = "--";
constexpr std::string_view kDrawingWord = "drawing";
constexpr std::string_view kArgumentWords = "arguments";

bool isNegativeNumber(std::string_view word) {
    const auto digit = [&](std::size_t at) {
        return at < word.size() && std::isdigit(static_cast<unsigned char>(word[at])) != 0;
    };
    return word.size() > 1 && word[0] == '-' && (digit(1) || (word[1] == '.' && digit(2)));
}

/// A check that refuses an empty word; `wanted` says what is to stand there.
auto notEmpty(std::string wanted) {
    return [wanted = std::move(wanted)](const std::string& word) {
        return word.empty() ? wanted + " is wanted" : std::string();
    };
}

void addArguments(CLI::App& app, const Command& command, Options& options) {
    app.add_option(std::string(kDrawingWord), options.drawing, "the drawing, a DXF file")
        ->type_name("DRAWING")
        ->check(notEmpty("the name of a drawing"))
        ->required();
    if (command.arguments.empty()) return;
    app.add_option(std::string(kArgumentWords), options.arguments,
                   std::string(command.argumentHelp))
        ->type_name(std::string(command.arguments))
        ->expected(command.least, command.most)
        ->check([putting = (command.options & kPutting) != 0](const std::string& word) {
            return std::string(word.empty() && !putting ? "an empty word names nothing" : "");
        })
        ->required(command.least > 0);
}

void addOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    if (has(kJson)) app.add_flag("--json", options.json, "print JSON, errors on stderr too");
    if (has(kChanging)) {
        app.add_flag("--dry-run", options.dryRun,
                     "do everything but the save; print the records that would change");
        app.add_flag("--no-backup", options.noBackup, "do not keep the old file as NAME.bak");
        app.add_option("-o,--output", options.output, "save to FILE instead of the drawing")
            ->type_name("FILE")
            ->check(notEmpty("the name of a file"));
        app.add_flag("--experimental-dwg", options.experimentalDwg,
                     "you know that no strict judge of DWG was at hand when writing it was tested");
        if (command.run != nullptr)
            app.add_flag("--salvage-drawing", options.salvageDrawing,
                         "of a damaged drawing take what can be read; wants -o FILE");
    }
    if (has(kNew)) {
        app.add_option("--release", options.release, "R12 R2000 R2004 R2007 R2010 R2013 R2018")
            ->type_name("RELEASE")
            ->capture_default_str();
        app.add_flag("--crlf", options.crlf, "end lines with CR LF");
    }
    if (has(kListing)) {
        app.add_flag("-l,--long", options.longListing, "type, bytes used, room left, name");
        app.add_flag("-R,--recursive", options.recursive, "everything below, with paths");
    }
    if (has(kValues))
        app.add_flag("--values", options.values, "print the values too, behind a tab");
    if (has(kRecursive)) app.add_flag("-R,--recursive", options.recursive, "the whole subtree");
    if (has(kRemoving))
        app.add_flag("-r,-R,--recursive", options.recursive,
                     "directories too, with everything below");
    if (has(kYes)) app.add_flag("--yes", options.yes, "really do it");
    if (has(kExtended))
        app.add_flag("--extended", options.extended,
                     "move entities on the control layer inside blocks to layer 0 too");
    if (has(kReplace)) app.add_flag("--replace", options.replace, "remove what is there before");
    if (has(kScript))
        app.add_option("-c,--command", options.script,
                       "the commands themselves, split by line ends or ;")
            ->type_name("COMMANDS");
    if (has(kRaw))
        app.add_flag("-r,--raw", options.raw, "print a string's own text, without quotes");
    if (has(kPutting)) {
        app.add_flag(std::string(kStringOption), options.asString,
                     "store the value as one string, as it stands");
        app.add_option("--file", options.fileValue, "read the value from FILE; - is stdin")
            ->type_name("FILE")
            ->check(notEmpty("the name of a file"));
    }
}

void addDrawingOptions(CLI::App& app, Options& options) {
    PictureOptions& picture = options.picture;
    const auto add = [&app](const char* name, std::string& value, const char* help,
                            const char* type) {
        app.add_option(name, value, help)->type_name(type)->check(notEmpty(type));
    };
    add("-o,--output", options.output,
        "write the picture to FILE, whose name says in which form; - is stdout", "FILE");
    add("--form", picture.form, "svg, png or pdf, where the name does not say", "FORM");
    add("--layout", picture.layout, "draw that sheet instead of model space", "NAME");
    add("--size", picture.size, "pixels of the longer side, 1000 when left out", "PIXELS");
    add("--scale", picture.scale, "of the paper to the drawing: 1:100 (PDF)", "SCALE");
    add("--window", picture.window, "only that part, in coordinates of the drawing", "X1,Y1,X2,Y2");
    add("--background", picture.background, "white, black, grey, transparent, or #rrggbb",
        "COLOUR");
    app.add_flag("--exact-colours", picture.exactColours,
                 "as the drawing has them, whether they can be seen or not");
    app.add_flag("--all", picture.all, "what is not plotted too");
    app.add_flag("--no-xrefs", options.noReferences, "leave out external references");
    app.add_flag("-v,--verbose", options.verbose, "which fonts stand for those of the drawing");
}

void addLookingOptions(CLI::App& app, const Command& command, Options& options) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
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
    }
    if (has(kBlocks))
        app.add_flag("--dump", options.blockDump,
                     "the library's own listing of the blocks of references");
    if (!has(kDrawing)) return;
    addDrawingOptions(app, options);
}

void addReferenceOptions(CLI::App& app, const Command& command, Options& options) {
    if ((command.options & kInside) != 0)
        app.add_option("--in", options.inside,
                       "look through a reference: its name, or the handle of an insert")
            ->type_name("NAME|HANDLE")
            ->check(notEmpty("a reference's name or the handle of an insert"));
    app.add_option("--xref-path", options.referenceFolders,
                   "look for references in DIR too (repeatable)")
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

void describeExits(CLI::App& app) {
    app.footer(
        "Exit codes: 0 done, 1 the answer is no, 2 called wrongly, 3 the drawing cannot be read,\n"
        "4 damage is left, 5 the drawing cannot be written, 6 the store refused, 130 interrupted.");
}

/// Puts a word behind the others, marked when the parser would see more in it than a word. Of
/// `--option=[...]` the value becomes a word of its own.
void append(std::vector<std::string>& words, std::string word, bool optionsEnded) {
    const std::size_t equals = word.find('=');
    const bool option = !optionsEnded && word.starts_with(kLongOption);
    if (option && equals != std::string::npos &&
        (word.starts_with(std::string(kStringOption) + "=") || word.find("=[") == equals)) {
        words.push_back(word.substr(0, equals));
        words.push_back(kMark + word.substr(equals + 1));
        return;
    }
    const bool marked = optionsEnded ? word.starts_with('-') : isNegativeNumber(word);
    if (marked || word.starts_with('[')) word.insert(word.begin(), kMark);
    words.push_back(std::move(word));
}

/// The words behind the program's name, the last one first as the parser wants them; those that
/// only look like options or lists marked.
std::vector<std::string> reversedWords(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    bool optionsEnded = false;
    for (const std::string& word : words) {
        if (word == kLongOption && !optionsEnded)
            optionsEnded = true;
        else
            append(result, word, optionsEnded);
    }
    std::ranges::reverse(result);
    return result;
}

void unmark(std::string& word) {
    if (!word.empty() && word.front() == kMark) word.erase(word.begin());
}

void unmarkAll(Options& options) {
    for (std::vector<std::string>* words : {&options.arguments, &options.layers, &options.types,
                                            &options.referenceFolders, &options.referenceMappings})
        std::ranges::for_each(*words, unmark);
    for (std::string* word : {&options.drawing, &options.output, &options.release, &options.inside,
                              &options.picture.window, &options.picture.layout})
        unmark(*word);
    for (std::optional<std::string>* word :
         {&options.fileValue, &options.script, &options.referenceRoot})
        if (*word) unmark(**word);
}

std::string withoutMarks(std::string text) {
    std::erase(text, kMark);
    return text;
}

const Command* commandNamed(std::string_view name) {
    const auto found = std::ranges::find(commands(), name, &Command::name);
    return found == commands().end() ? nullptr : &*found;
}

/// What is wrong with the words behind a command. The parser's own texts speak of its parts.
std::string complaintOf(const CLI::ParseError& error, const Command& command) {
    const std::string text = withoutMarks(error.what());
    const std::size_t colon = text.find(": ");
    const std::string subject = text.substr(0, colon);
    const std::string rest = colon == std::string::npos ? text : text.substr(colon + 2);
    const auto is = [&error](CLI::ExitCodes code) {
        return error.get_exit_code() == static_cast<int>(code);
    };
    if (is(CLI::ExitCodes::ExtrasError))
        return "\"" + rest + "\" is " +
               (rest.starts_with('-') ? "no option of this command" : "too much");
    if (is(CLI::ExitCodes::RequiredError))
        return text.starts_with(kDrawingWord) ? "a drawing is missing"
                                              : std::string(command.arguments) + " is missing";
    if (is(CLI::ExitCodes::ArgumentMismatch)) {
        if (subject != kArgumentWords) return subject + " wants something behind it";
        return std::string("there are too ") + (rest.starts_with("At Most") ? "many" : "few") +
               " words behind the drawing";
    }
    return subject == kDrawingWord || subject == kArgumentWords ? rest : text;
}

/// Says what is wrong with a command line, or prints the help or version that it asks for.
int explain(const CLI::App& app, const CLI::ParseError& error,
            const std::vector<std::string>& words) {
    if (error.get_exit_code() == 0) return app.exit(error, std::cout, std::cerr);
    if (words.empty() || words.front().starts_with('-')) {
        std::cerr << "moradmin: a command is missing; \"moradmin --help\" lists them\n";
        return kUsage;
    }
    const Command* command = commandNamed(words.front());
    if (command == nullptr) {
        std::cerr << "moradmin: \"" << oneLine(words.front()) << "\" is not a command; these are:";
        for (const Command& known : commands()) std::cerr << " " << known.name;
        std::cerr << "\n";
        return kUsage;
    }
    std::cerr << "moradmin: " << command->name << ": " << oneLine(complaintOf(error, *command))
              << "; it is called as \"moradmin " << command->name << " DRAWING"
              << (command->arguments.empty() ? "" : " ") << command->arguments
              << "\", --help says more\n";
    return kUsage;
}

/// The command line's rules, filling `options`.
std::unique_ptr<CLI::App> makeApp(Options& options) {
    auto app = std::make_unique<CLI::App>(
        "Looks into, fills, checks and repairs the file store inside CAD drawings (DXF, R12 to "
        "R2018).",
        "moradmin");
    app->set_version_flag("--version", "moradmin " + std::string(kVersion));
    app->require_subcommand(1);
    describeExits(*app);
    for (const Command& command : commands()) {
        CLI::App* sub = app->add_subcommand(std::string(command.name), std::string(command.help));
        addArguments(*sub, command, options);
        addOptions(*sub, command, options);
        addLookingOptions(*sub, command, options);
        if ((command.options & (kInside | kReferences)) != 0)
            addReferenceOptions(*sub, command, options);
        if ((command.options & kRepairing) != 0) addRepairOptions(*sub, options);
        describeExits(*sub);
        sub->callback([&options, name = std::string(command.name)] { options.command = name; });
    }
    return app;
}

}  // namespace

ParsedLine parseCommandLine(int count, char** words) {
    ParsedLine line;
    const auto app = makeApp(line.options);
    const std::vector<std::string> given(words + 1, words + count);
    try {
        app->parse(reversedWords(given));
    } catch (const CLI::ParseError& error) {
        line.exitCode = explain(*app, error, given);
        return line;
    }
    unmarkAll(line.options);
    return line;
}

Options parseScriptLine(const std::vector<std::string>& words, const std::string& drawing) {
    Options options;
    const auto app = makeApp(options);
    std::vector<std::string> all = words;
    all.insert(all.begin() + 1, drawing);
    try {
        app->parse(reversedWords(all));
    } catch (const CLI::ParseError& error) {
        const Command* command = commandNamed(words.front());
        throw Failure(
            kUsage, words.front() + ": " +
                        (command == nullptr           ? "is not a command"
                         : error.get_exit_code() == 0 ? "help and version cannot stand in a script"
                                                      : complaintOf(error, *command)));
    }
    unmarkAll(options);
    return options;
}

}  // namespace mor::tool
