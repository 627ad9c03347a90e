#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/arrange.h"
#include "tools/moradmin/line/complaints.h"
#include "tools/moradmin/line/help.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/line/words.h"
#include "tools/moradmin/options.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

namespace mor::tool {

namespace {

int refuse(const Options& options, const std::string& text) {
    printFailure(options, Failure(kUsage, text));
    return kUsage;
}

/// Words that name no command.
ParsedLine withoutCommand(const std::vector<std::string>& words) {
    ParsedLine line;
    const auto holds = [&words](const char* word) {
        return std::ranges::find(words, word) != words.end();
    };
    line.options.json = holds("--json");
    if (holds("--version") || (!words.empty() && words.front() == "version")) {
        printVersion(line.options);
        line.exitCode = kDone;
    } else if (holds("--help") || holds("-h")) {
        printOverview();
        line.exitCode = kDone;
    } else if (words.empty() || words.front().starts_with('-')) {
        line.exitCode = refuse(line.options, "a command is missing; \"moradmin help\" lists them");
    } else {
        line.exitCode =
            refuse(line.options, noCommand(words.front()) + "; \"moradmin help\" lists all");
    }
    return line;
}

}  // namespace

ParsedLine parseCommandLine(int count, char** words) {
    std::vector<std::string> given(words + 1, words + count);
    if (!given.empty() && given.front().starts_with('-'))
        given = commandFirst(std::move(given), valuedOptions());
    const Command* command = given.empty() ? nullptr : commandNamed(given.front());
    if (command == nullptr) return withoutCommand(given);
    ParsedLine line;
    line.options.command = command->name;
    const auto app = rulesFor(*command, line.options);
    std::vector<std::string> reversed = reversedWords({given.begin() + 1, given.end()});
    try {
        app->parse(reversed);
        unmarkAll(line.options);
        arrangeWords(line.options, *command);
    } catch (const CLI::CallForHelp&) {
        printPage(*command);
        line.exitCode = kDone;
    } catch (const CLI::ParseError& error) {
        line.options.json = std::ranges::find(given, "--json") != given.end();
        line.exitCode = refuse(
            line.options, std::string(command->name) + ": " + complaintOf(error, *command, given) +
                              "; it is called as \"" + usageOf(*command) + "\", --help says more");
    } catch (const Failure& failure) {
        line.exitCode = refuse(line.options, std::string(command->name) + ": " + failure.what() +
                                                 "; it is called as \"" + usageOf(*command) + "\"");
    }
    return line;
}

Options parseScriptLine(const std::vector<std::string>& words, const std::string& drawing) {
    const Command* command = commandNamed(words.front());
    if (command == nullptr) throw Failure(kUsage, noCommand(words.front()));
    const std::string name = words.front() + ": ";
    Options options;
    options.command = words.front();
    options.inScript = true;
    const auto app = rulesFor(*command, options);
    std::vector<std::string> all(words.begin() + 1, words.end());
    all.insert(all.begin(), drawing);
    std::vector<std::string> reversed = reversedWords(all);
    try {
        app->parse(reversed);
    } catch (const CLI::CallForHelp&) {
        throw Failure(kUsage, name + "help cannot stand in a script");
    } catch (const CLI::ParseError& error) {
        all.insert(all.begin(), words.front());
        throw Failure(kUsage, name + complaintOf(error, *command, all));
    }
    unmarkAll(options);
    options.drawing = drawing;  // whatever it is called
    arrangeWords(options, *command);
    return options;
}

}  // namespace mor::tool
