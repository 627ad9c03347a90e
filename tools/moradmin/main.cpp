#include "frame/module.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/options.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/places.h"
#include "tools/moradmin/session.h"
#include "tools/moradmin/several.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <unistd.h>

namespace {

/// The library is attached while the program runs.
class Module {
public:
    Module() : m_attached(mor::attachModule() == 1) {}
    ~Module() { mor::detachModule(); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    [[nodiscard]] bool attached() const { return m_attached; }

private:
    bool m_attached;
};

void onEnd(int signal) {
    if (!mor::host::abandonSaves()) return;
    if (signal == SIGINT) ::_exit(mor::tool::kInterrupted);
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

/// What ends the program leaves no temporary file behind.
void catchSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGPIPE})
        if (std::signal(signal, onEnd) == SIG_IGN) std::signal(signal, SIG_IGN);  // as with nohup
    std::signal(SIGXFSZ, SIG_IGN);  // writing fails then, and is told
}

void flushOutput() {
    std::cout.flush();
    if (!std::cout)
        throw mor::tool::Failure(mor::tool::kUnwritable, "the output cannot be written");
}

int runCommand(const mor::tool::Options& given) {
    using namespace mor::tool;
    Options options = given;
    if (!options.output.empty()) options.outputBefore = mor::host::fileState(options.output);
    const auto command = std::ranges::find(commands(), options.command, &Command::name);
    setReferencePlaces(options);
    if (!options.inside.empty() && (command->options & kChanging) != 0)
        throw Failure(
            kRefused,
            options.drawing + ": references are read-only; change the referenced drawing itself",
            options.drawing);
    if (command->runAlone != nullptr) return command->runAlone(options);
    Session session(options);
    if ((command->options & kChanging) != 0) session.refuseUnwritable(options);
    const int code = command->run(session, options);
    if (code != kDone || (command->options & kChanging) == 0) return code;
    flushOutput();  // nobody learns of a save from an exit code that tells of the output
    session.save(options);
    return code;
}

int run(const mor::tool::Options& options) {
    using namespace mor::tool;
    try {
        const int code = runCommand(options);
        refuseLostReadings();
        flushOutput();
        return sawDamagedDrawing() ? moreSerious(code, kDamaged) : code;
    } catch (const Failure& failure) {
        std::cout.flush();
        const auto lost = mor::host::takeReadFailure();  // the reason behind it, then
        // What a damaged drawing does not show may have stood behind the damage.
        const ExitCode code = sawDamagedDrawing()
                                  ? static_cast<ExitCode>(moreSerious(failure.code(), kDamaged))
                                  : failure.code();
        printFailure(options,
                     lost ? Failure(*lost) : Failure(code, failure.what(), failure.path()));
        return lost ? kUnreadable : code;
    } catch (const std::bad_alloc&) {
        printFailure(options,
                     Failure(kUnreadable, "there is not enough memory for this", options.drawing));
        return kUnreadable;
    } catch (const std::exception& error) {
        printFailure(options, Failure(kUnreadable, error.what(), options.drawing));
        return kUnreadable;
    }
}

}  // namespace

int main(int count, char** words) {
    std::ios::sync_with_stdio(false);
    const mor::tool::ParsedLine line = mor::tool::parseCommandLine(count, words);
    if (line.exitCode) return *line.exitCode;
    catchSignals();
    const Module module;
    if (!module.attached()) {
        std::cerr << "moradmin: the library does not start\n";
        return mor::tool::kUnreadable;
    }
    return run(line.options);
}
