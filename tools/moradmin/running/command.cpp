#include "tools/moradmin/running/command.h"

#include "tools/moradmin/changes/report.h"
#include "tools/moradmin/changes/text_dump.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/rules.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/places.h"
#include "tools/moradmin/running/progress.h"
#include "tools/moradmin/running/several.h"
#include "tools/moradmin/session.h"

#include <chrono>
#include <iostream>
#include <sstream>
#include <thread>

namespace mor::tool {

namespace {

constexpr std::chrono::milliseconds kBetweenTries{50};

bool isChanging(const Command& command) { return (command.options & kChanging) != 0; }

int runOnDrawing(const Command& command, const Options& options) {
    wantHeadings(options.header);
    if (options.textconv) {
        printTextDump(textDumpOf(options.drawing));
        return kDone;
    }
    Session session(options);
    if (!isChanging(command)) return command.run(session, options);
    session.refuseUnwritable(options);
    const ChangeReport report(session, options);
    const int code = command.run(session, options);
    if (code == kDone || code == kDamaged) saveAndTell(session, options, report);
    return code;
}

int runOnce(const Command& command, const Options& options) {
    const Ticking ticking(options.command + " " + options.drawing,
                          !options.quiet && command.runAlone != &runShell);
    if (command.runAlone != nullptr) return command.runAlone(options);
    if ((command.options & kSeveral) == 0) return runOnDrawing(command, options);
    return overDrawings(options,
                        [&command](const Options& own) { return runOnDrawing(command, own); });
}

/// Holds back what is printed until it is known whether it counts.
class HeldOutput {
public:
    HeldOutput() : m_out(std::cout.rdbuf(m_text.rdbuf())) {}
    ~HeldOutput() { std::cout.rdbuf(m_out); }
    HeldOutput(const HeldOutput&) = delete;
    HeldOutput& operator=(const HeldOutput&) = delete;
    [[nodiscard]] std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_out;
};

/// Runs the command again while another process saves the drawing.
int runPatiently(const Command& command, const Options& options) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(options.wait);
    while (true) {
        std::string text;
        try {
            int code = kDone;
            {
                const HeldOutput held;
                code = runOnce(command, options);
                text = held.text();
            }
            std::cout << text;
            return code;
        } catch (const Failure& failure) {
            if (!failure.busy() || std::chrono::steady_clock::now() >= end) throw;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
}

}  // namespace

int runCommand(const Options& given) {
    Options options = given;
    const Command& command = *commandNamed(options.command);
    setReferencePlaces(options);
    if (isChanging(command)) {
        if (!options.inside.empty())
            throw Failure(kRefused,
                          options.drawing +
                              ": references are read-only; change the referenced drawing itself",
                          options.drawing);
        refuseOtherTarget(options);
        if (!options.output.empty() && options.output != "-")
            options.outputBefore = host::fileState(options.output);
    }
    return options.wait > 0.0 ? runPatiently(command, options) : runOnce(command, options);
}

}  // namespace mor::tool
