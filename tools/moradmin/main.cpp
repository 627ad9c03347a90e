#include "frame/module.h"
#include "host/host.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/options.h"
#include "tools/moradmin/running/command.h"
#include "tools/moradmin/running/guarded.h"
#include "tools/moradmin/running/private_files.h"
#include "tools/moradmin/running/progress.h"
#include "tools/moradmin/running/several.h"

#include <csignal>
#include <iostream>
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
    mor::tool::endVisits();
    if (!mor::host::abandonSaves()) return;
    mor::tool::Progress::clear();
    mor::tool::removePrivateFiles();
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
    return mor::tool::guarded(line.options,
                              [&line] { return mor::tool::runCommand(line.options); });
}
