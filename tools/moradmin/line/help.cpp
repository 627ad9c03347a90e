#include "tools/moradmin/line/help.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/manual.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/options.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <sstream>

namespace mor::tool {

namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kNameColumn = 28;

/// A name at the left and its text beside it, wrapped.
void printEntry(const std::string& name, const std::string& text, std::size_t column) {
    std::cout << (name.empty() ? "" : "  ") << name;
    std::size_t at = name.empty() ? 0 : name.size() + 2;
    if (!name.empty() && at + 2 > column) {
        std::cout << "\n";
        at = 0;
    }
    std::istringstream words(text);
    bool first = true;
    for (std::string word; words >> word; first = false) {
        if (!first && at + 1 + word.size() > kWidth) {
            std::cout << "\n";
            at = 0;
        } else if (!first) {
            std::cout << " ";
            ++at;
        }
        if (at < column) {
            std::cout << std::string(column - at, ' ');
            at = column;
        }
        std::cout << word;
        at += word.size();
    }
    std::cout << "\n";
}

std::string namesOf(const OptionHelp& option) {
    std::string text;
    for (const std::string& name : option.names) text += (text.empty() ? "" : ", ") + name;
    return text + (option.value.empty() ? "" : " " + option.value);
}

}  // namespace

const Command* commandNamed(std::string_view name) {
    const auto found = std::ranges::find(commands(), name, &Command::name);
    return found == commands().end() ? nullptr : &*found;
}

std::string usageOf(const Command& command) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    const std::string name = "moradmin " + std::string(command.name);
    const std::string others =
        command.arguments.empty() ? "" : " " + std::string(command.arguments);
    if (has(kNoDrawing)) return name + others;
    const std::string drawing = std::string(" DRAWING") + (has(kSeveral) ? "..."
                                                           : has(kSpot)  ? "[:PATH]"
                                                                         : "");
    return name + (has(kPatternFirst) || has(kFolderFirst) ? others + drawing : drawing + others);
}

std::vector<WordHelp> wordsOf(const Command& command) {
    const auto has = [&command](Option option) { return (command.options & option) != 0; };
    std::vector<WordHelp> words;
    if (has(kSeveral))
        words.push_back({"DRAWING...", "drawings, DXF or DWG; with -r folders too; - is stdin"});
    else if (!has(kNoDrawing))
        words.push_back({"DRAWING", "the drawing, DXF or DWG; - is stdin"});
    if (!command.arguments.empty())
        words.push_back({std::string(command.arguments), std::string(command.argumentHelp)});
    if (has(kPatternFirst) || has(kFolderFirst)) std::swap(words.front(), words.back());
    return words;
}

void printVersion(const Options& options) {
    if (options.json) {
        Json object = jsonHead(options);
        object["command"] = "version";
        object["version"] = MORADMIN_VERSION;
        object["commit"] = MORADMIN_COMMIT;
        return printJson(object);
    }
    std::cout << "moradmin " << MORADMIN_VERSION << " (" << MORADMIN_COMMIT << ")\n";
}

void printOverview() {
    std::size_t widest = 0;
    for (const Command& command : commands()) widest = std::max(widest, command.name.size());
    std::cout << "Looks into, fills, checks and repairs the file store inside CAD drawings, and "
                 "tells\nwhat else they hold (DXF and DWG).\n\n"
                 "  moradmin COMMAND DRAWING... [OPTION...]\n\nCommands\n";
    for (const Command& command : commands())
        if ((command.options & kHidden) == 0)
            printEntry(std::string(command.name), std::string(command.help), widest + 4);
    std::cout << "\n\"moradmin help COMMAND\" says more and gives an example. Options may stand "
                 "anywhere;\n-- ends them. --json prints JSON, --version the version.\n\nExit "
                 "codes\n";
    printEntry("", std::string(kExitCodes), 2);
}

void printPage(const Command& command) {
    std::cout << usageOf(command) << "\n\n";
    printEntry("", std::string(command.help), 2);
    const std::vector<WordHelp> words = wordsOf(command);
    if (!words.empty()) std::cout << "\n";
    for (const WordHelp& word : words) printEntry(word.name, word.text, kNameColumn);
    std::cout << "\nOptions\n";
    for (const OptionHelp& option : optionsOf(command))
        printEntry(namesOf(option), option.text, kNameColumn);
    printEntry("-h, --help", "print this", kNameColumn);
    if (const std::string_view example = exampleOf(command); !example.empty())
        std::cout << "\nExample\n  " << example << "\n";
    std::cout << "\nExit codes\n";
    printEntry("", std::string(kExitCodes), 2);
}

namespace {

Json pageJson(const Command& command) {
    Json page{{"name", command.name}, {"usage", usageOf(command)}, {"text", command.help}};
    page["words"] = Json::array();
    for (const WordHelp& word : wordsOf(command))
        page["words"].push_back({{"name", word.name}, {"text", word.text}});
    page["options"] = Json::array();
    for (const OptionHelp& option : optionsOf(command))
        page["options"].push_back(
            {{"names", option.names}, {"value", textOrNull(option.value)}, {"text", option.text}});
    page["example"] = exampleOf(command);
    return page;
}

/// Of one command, or of all.
void printHelpJson(const Options& options, const Command* one) {
    Json object = jsonHead(options);
    object["commands"] = Json::array();
    for (const Command& command : commands())
        if (one == nullptr ? (command.options & kHidden) == 0 : one == &command)
            object["commands"].push_back(pageJson(command));
    printJson(object);
}

}  // namespace

int runHelp(const Options& options) {
    if (!options.manual.empty()) {
        writeManual(options.manual);
        return kDone;
    }
    if (options.arguments.empty()) {
        if (options.json)
            printHelpJson(options, nullptr);
        else
            printOverview();
        return kDone;
    }
    const Command* command = commandNamed(options.argument());
    if (command == nullptr)
        throw Failure(kUsage, noCommand(options.argument()) + "; \"moradmin help\" lists all");
    if (options.json)
        printHelpJson(options, command);
    else
        printPage(*command);
    return kDone;
}

}  // namespace mor::tool
