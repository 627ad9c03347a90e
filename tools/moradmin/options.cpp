#include "tools/moradmin/options.h"

#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>
#include <string_view>

namespace mor::tool {

namespace {

constexpr std::string_view kVersion = MORADMIN_VERSION;

/// Stands before a number such as -5 while the words are sorted, so that it is not taken for an
/// option.
constexpr char kNumberMark = '\x01';

bool isNegativeNumber(std::string_view word) {
    const auto digit = [&](std::size_t at) {
        return at < word.size() && std::isdigit(static_cast<unsigned char>(word[at])) != 0;
    };
    return word.size() > 1 && word[0] == '-' && (digit(1) || (word[1] == '.' && digit(2)));
}

void addArguments(CLI::App& app, const Command& command, Options& options) {
    app.add_option("drawing", options.drawing, "the drawing, a DXF text file")
        ->type_name("DRAWING")
        ->required();
    if (command.arguments.empty()) return;
    app.add_option("arguments", options.arguments, std::string(command.argumentHelp))
        ->type_name(std::string(command.arguments))
        ->expected(command.least, command.most)
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
            ->type_name("FILE");
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
    if (has(kRaw))
        app.add_flag("-r,--raw", options.raw, "print a string's own text, without quotes");
    if (has(kPutting)) {
        app.add_option("--string", options.stringValue, "store TEXT as a string")
            ->type_name("TEXT");
        app.add_option("--file", options.fileValue, "read the LISP text from FILE; - is stdin")
            ->type_name("FILE");
    }
}

void describeExits(CLI::App& app) {
    app.footer(
        "Exit codes: 0 done, 1 the answer is no, 2 called wrongly, 3 the drawing cannot be read,\n"
        "4 damage is left, 5 the drawing cannot be written, 6 the store refused, 130 interrupted.");
}

/// The words behind the program's name, the last one first as the parser wants them; numbers
/// marked.
std::vector<std::string> reversedWords(int count, char** words) {
    std::vector<std::string> result;
    bool optionsEnded = false;
    for (int i = 1; i < count; ++i) {
        std::string word = words[i];
        if (word == "--") optionsEnded = true;
        if (!optionsEnded && isNegativeNumber(word)) word.insert(word.begin(), kNumberMark);
        result.push_back(std::move(word));
    }
    std::ranges::reverse(result);
    return result;
}

void unmark(std::string& word) {
    if (!word.empty() && word.front() == kNumberMark) word.erase(word.begin());
}

}  // namespace

ParsedLine parseCommandLine(int count, char** words) {
    ParsedLine line;
    CLI::App app{
        "Looks into, fills and checks the file store inside CAD drawings (DXF text, R12 to R2018).",
        "moradmin"};
    app.set_version_flag("--version", "moradmin " + std::string(kVersion));
    app.require_subcommand(1);
    describeExits(app);
    for (const Command& command : commands()) {
        CLI::App* sub = app.add_subcommand(std::string(command.name), std::string(command.help));
        addArguments(*sub, command, line.options);
        addOptions(*sub, command, line.options);
        describeExits(*sub);
        sub->callback([&line, name = std::string(command.name)] { line.options.command = name; });
    }
    try {
        app.parse(reversedWords(count, words));
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error, std::cout, std::cerr);
        line.exitCode = code == 0 ? kDone : kUsage;
        return line;
    }
    std::ranges::for_each(line.options.arguments, unmark);
    if (line.options.stringValue) unmark(*line.options.stringValue);
    return line;
}

}  // namespace mor::tool
