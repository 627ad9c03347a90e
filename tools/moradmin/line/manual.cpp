#include "tools/moradmin/line/manual.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/help.h"
#include "tools/moradmin/line/rules.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace mor::tool {

namespace {

/// A text in which the formatter sees nothing but letters.
std::string plain(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if (c == '\'')
            result += "\\(aq";
        else if (c == '.' && result.empty())
            result += "\\&.";
        else
            result += c;
    }
    return result;
}

std::string upper(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

std::string heading(const std::string& title) {
    return ".TH \"" + upper(title) +
           "\" 1 \"\" \"moradmin " MORADMIN_VERSION "\" \"User Commands\"\n";
}

std::string entry(const std::string& name, const std::string& text) {
    return ".TP\n.B " + plain(name) + "\n" + plain(text) + "\n";
}

std::string page(const Command& command) {
    const std::string name = "moradmin-" + std::string(command.name);
    std::string text = heading(name) + ".SH NAME\n" + plain(name) + " \\- " + plain(command.help) +
                       "\n.SH SYNOPSIS\n.B " + plain(usageOf(command)) + "\n.RI [ OPTION ]...\n";
    text += ".SH ARGUMENTS\n";
    for (const WordHelp& word : wordsOf(command)) text += entry(word.name, word.text);
    text += ".SH OPTIONS\n";
    for (const OptionHelp& option : optionsOf(command)) {
        std::string names;
        for (const std::string& one : option.names) names += (names.empty() ? "" : ", ") + one;
        text += entry(names + (option.value.empty() ? "" : " " + option.value), option.text);
    }
    text += entry("-h, --help", "print help");
    if (const std::string_view example = exampleOf(command); !example.empty())
        text += ".SH EXAMPLE\n.nf\n" + plain(example) + "\n.fi\n";
    return text + ".SH EXIT STATUS\n" + plain(kExitCodes) + "\n.SH SEE ALSO\n.BR moradmin (1)\n";
}

std::string overview() {
    std::string text = heading("moradmin") +
                       ".SH NAME\nmoradmin \\- look into, fill, check and repair the file store "
                       "inside CAD drawings\n.SH SYNOPSIS\n.B moradmin\n.I COMMAND DRAWING\n.RI "
                       "... [ OPTION ]...\n.SH COMMANDS\n";
    for (const Command& command : commands())
        if ((command.options & kHidden) == 0)
            text += ".TP\n.BR moradmin\\-" + std::string(command.name) + " (1)\n" +
                    plain(command.help) + "\n";
    return text + ".SH EXIT STATUS\n" + plain(kExitCodes) + "\n";
}

void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) throw Failure(kUnwritable, path.string() + ": cannot be written", path.string());
}

}  // namespace

void writeManual(const std::string& folder) {
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    write(std::filesystem::path(folder) / "moradmin.1", overview());
    for (const Command& command : commands())
        if ((command.options & kHidden) == 0)
            write(std::filesystem::path(folder) / ("moradmin-" + std::string(command.name) + ".1"),
                  page(command));
}

}  // namespace mor::tool
