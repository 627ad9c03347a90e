#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"

#include <csignal>
#include <iostream>
#include <sstream>
#include <string>

namespace mor::tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int /*signal*/) {
    interrupted = 1;
    host::pressBreakKey();
}

/// While it lives, what the library prints goes to a stream and Ctrl-C is its break key.
class CommandLine {
public:
    explicit CommandLine(std::ostream& out) : m_former(std::signal(SIGINT, onInterrupt)) {
        host::setPrinter([&out](std::wstring_view text) { out << utf8(text); });
    }
    ~CommandLine() {
        host::setPrinter({});
        std::signal(SIGINT, m_former);
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

private:
    void (*m_former)(int);
};

}  // namespace

int runDir(Session& session, const Options& options) {
    const std::wstring path = wide(options.argument("/"));
    const bool stored = session.hasDirectories();
    const bool valid = CMORCadDwgFileSystem::isValidDirPathName(path.c_str());
    if (!valid) {
        const std::wstring bare = directoryPath(session, utf8(path));  // says what is wrong
        refuse(session, path,
               utf8(path) + " is no directory path; it ends without /, as " + utf8(bare));
    }
    std::ostringstream text;
    std::ostream& out = options.json ? static_cast<std::ostream&>(text) : std::cout;
    const CommandLine commandLine(out);
    const bool listed = session.store().dir(path.c_str(), options.recursive);
    std::cout.flush();
    if (options.json && interrupted == 0) {
        Json object = jsonHead(options);
        object["path"] = utf8(path);
        object["listing"] = text.str();
        printJson(object);
    }
    if (interrupted != 0) return kInterrupted;
    return listed || (!stored && path == L"/") ? kDone : kRefused;
}

}  // namespace mor::tool
