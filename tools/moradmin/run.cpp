#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/line/script.h"

#include <algorithm>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

std::string scriptText(const Options& options) {
    if (options.script && !options.arguments.empty())
        throw Failure(kUsage, "a FILE or -c COMMANDS, not both");
    if (options.script) return *options.script;
    return readInput(options.argument("-"), kStdinScript);
}

/// What stands in a script only where it says nothing about the drawing as a whole.
void refuseRunsOptions(const Options& options, bool changing) {
    if (changing &&
        (!options.output.empty() || options.dryRun || options.noBackup || options.salvageDrawing ||
         options.experimentalDwg || options.force || options.wait > 0.0))
        throw Failure(
            kUsage,
            "--dry-run, --no-backup, --experimental-dwg, --salvage-drawing, --force, --wait and -o "
            "belong to run itself");
    if (!options.inside.empty() && changing)
        throw Failure(kRefused, "references are read-only; change the referenced drawing itself");
    if (options.referenceRoot || !options.referenceFolders.empty() ||
        !options.referenceMappings.empty())
        throw Failure(kUsage, "--xref-root, --xref-path and --map belong to run itself");
    if (!options.inside.empty())
        throw Failure(kUsage, "--in cannot stand in a script, which works on one drawing");
}

}  // namespace

Options scriptLine(const Session& session, const std::vector<std::string>& words) {
    const Command* command = commandNamed(words.front());
    const std::string word = "\"" + words.front() + "\"";
    if (command == nullptr) throw Failure(kUsage, noCommand(words.front()));
    if (command->run == nullptr || (command->options & kNotInScripts) != 0)
        throw Failure(kUsage, word + " cannot stand in a script, which works on one drawing");
    Options options = parseScriptLine(words, session.file());
    refuseRunsOptions(options, (command->options & kChanging) != 0);
    return options;
}

int runScriptLine(Session& session, const Options& options) {
    const Command* command = commandNamed(options.command);
    const int code = command->run(session, options);
    // The store is not walked again for each of many lines.
    if (command->run == &runPut || command->run == &runRm)
        session.noteStored();
    else if ((command->options & kChanging) != 0)
        session.forget();
    return code;
}

int runRun(Session& session, const Options& options) {
    for (const ScriptLine& line : readScript(scriptText(options))) {
        const std::string place =
            "line " + std::to_string(line.number) +
            (line.command == 1 ? "" : ", command " + std::to_string(line.command)) + ": ";
        try {
            Options own = scriptLine(session, line.words);
            own.json = own.json || options.json;
            const int code = runScriptLine(session, own);
            if (code != kDone && code != kNo)
                throw Failure(
                    static_cast<ExitCode>(code),
                    "\"" + line.words.front() + "\" ended with exit code " + std::to_string(code));
        } catch (const Failure& failure) {
            throw Failure(failure.code(), place + failure.what() + "; nothing was saved",
                          failure.path());
        }
    }
    return kDone;
}

}  // namespace mor::tool
