#include "tools/moradmin/line/complaints.h"

#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/line/words.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace mor::tool {

namespace {

/// What other programs call our commands.
constexpr auto kOtherNames =
    std::to_array<std::pair<std::string_view, std::string_view>>({{"get", "cat"},
                                                                  {"read", "cat"},
                                                                  {"show", "cat"},
                                                                  {"print", "cat"},
                                                                  {"set", "put"},
                                                                  {"write", "put"},
                                                                  {"store", "put"},
                                                                  {"add", "put"},
                                                                  {"list", "ls"},
                                                                  {"del", "rm"},
                                                                  {"delete", "rm"},
                                                                  {"remove", "rm"},
                                                                  {"copy", "cp"},
                                                                  {"move", "mv"},
                                                                  {"rename", "mv"},
                                                                  {"compare", "diff"},
                                                                  {"validate", "check"},
                                                                  {"references", "xrefs"}});

/// The first word of those that are too much; an option before others.
std::string firstExtra(const std::string& extras, const std::vector<std::string>& words) {
    const std::string all = " " + extras + " ";
    std::string first;
    for (const std::string& word : words) {
        if (word == "--") break;
        if (all.find(" " + word + " ") == std::string::npos) continue;
        if (word.size() > 1 && word.starts_with('-')) return word;
        if (first.empty()) first = word;
    }
    return first.empty() ? extras : first;
}

/// The first word that looks like an option and is none of the command's; empty when all are.
std::string unknownOption(const std::vector<OptionHelp>& options,
                          const std::vector<std::string>& words) {
    const auto isKnown = [&options](const std::string& name) {
        return name == "--help" || name == "-h" ||
               std::ranges::any_of(options, [&name](const OptionHelp& option) {
                   return std::ranges::find(option.names, name) != option.names.end();
               });
    };
    for (const std::string& word : words) {
        if (word == "--") break;
        if (!word.starts_with("--")) continue;
        std::string name = word.substr(0, word.find('='));
        if (!isKnown(name)) return name;
    }
    return {};
}

std::string optionHint(const std::vector<OptionHelp>& options, const std::string& word) {
    std::vector<std::string> names = {"--help"};
    for (const OptionHelp& option : options)
        std::ranges::copy_if(option.names, std::back_inserter(names),
                             [](const std::string& name) { return name.starts_with("--"); });
    const std::string near = nearest(word, names);
    return near.empty() ? "" : " (did you mean " + near + "?)";
}

/// The first of the argument's names, without brackets and dots.
std::string firstArgument(const Command& command) {
    std::string name(command.arguments.substr(0, command.arguments.find(' ')));
    std::erase_if(name, [](char c) { return c == '[' || c == ']' || c == '.'; });
    return name;
}

std::string missing(const CLI::ParseError& error, const Command& command,
                    const std::vector<std::string>& words) {
    const std::string text = error.what();
    const bool drawing = text.starts_with(kDrawingWord);
    std::error_code code;
    // A path alone, and no drawing in front of it.
    const bool pathAlone =
        words.size() > 1 && words[1].starts_with('/') && !std::filesystem::exists(words[1], code);
    return drawing || pathAlone ? "a drawing is missing" : firstArgument(command) + " is missing";
}

}  // namespace

std::string complaintOf(const CLI::ParseError& error, const Command& command,
                        const std::vector<std::string>& words) {
    const std::vector<OptionHelp> options = optionsOf(command);
    if (command.name == "shell" && std::ranges::find(words, "--json") != words.end())
        return "--json is for programs, which use \"moradmin run\"; commands typed in the shell "
               "take it too, each by itself";
    if (const std::string word = unknownOption(options, words); !word.empty())
        return "\"" + word + "\" is no option of this command" + optionHint(options, word);
    const std::string text = withoutMarks(error.what());
    const std::size_t colon = text.find(": ");
    const std::string subject = text.substr(0, colon);
    const std::string rest = colon == std::string::npos ? text : text.substr(colon + 2);
    const auto is = [&error](CLI::ExitCodes code) {
        return error.get_exit_code() == static_cast<int>(code);
    };
    if (is(CLI::ExitCodes::ExtrasError)) {
        const std::string extra = firstExtra(rest, words);
        return "\"" + oneLine(extra) + "\" is " +
               (extra.starts_with('-') ? "no option of this command" : "too much");
    }
    if (is(CLI::ExitCodes::RequiredError)) return missing(error, command, words);
    if (is(CLI::ExitCodes::ArgumentMismatch)) {
        if (subject != kArgumentWords) return subject + " wants something behind it";
        const bool many = rest.starts_with("At Most");
        return std::string("there are too ") + (many ? "many" : "few") + " words for " +
               std::string(command.arguments) +
               (many && (command.options & kPutting) != 0
                    ? "; a value is one word, in quotes: '(1 2 3)'"
                    : "");
    }
    return subject == kDrawingWord || subject == kArgumentWords ? rest : text;
}

std::string noCommand(const std::string& word) {
    std::vector<std::string> names;
    for (const Command& command : commands()) names.emplace_back(command.name);
    std::string near = nearest(word, names);
    for (const auto& [other, own] : kOtherNames)
        if (other == word) near = own;
    return "\"" + oneLine(word) + "\" is not a command" +
           (near.empty() ? "" : " (did you mean \"" + near + "\"?)");
}

}  // namespace mor::tool
