#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/way.h"

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int /*signal*/) {
    interrupted = 1;
    host::pressBreakKey();
}

/// While it lives, what the library prints goes to stdout and Ctrl-C is its break key.
class CommandLine {
public:
    CommandLine() : m_former(std::signal(SIGINT, onInterrupt)) {
        host::setPrinter([](std::wstring_view text) { std::cout << utf8(text); });
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

struct Branch {
    std::wstring path;
    std::vector<Store::Entry> entries;
    std::size_t next = 0;
};

}  // namespace

int runDir(Session& session, const Options& options) {
    const std::wstring path = wide(options.argument("/"));
    const bool stored = session.hasDirectories();
    const bool valid = CMORCadDwgFileSystem::isValidDirPathName(path.c_str());
    const std::string word = options.argument("/");
    if (!valid)
        throw Failure(kRefused, session.message("\"" + word + "\" is no directory path"), word);
    const CommandLine commandLine;
    const bool listed = session.store().dir(path.c_str(), options.recursive);
    std::cout.flush();
    if (interrupted != 0) return kInterrupted;
    return listed || (!stored && path == L"/") ? kDone : kRefused;
}

int runTree(Session& session, const Options& options) {
    const std::wstring top = directoryPath(session, options.argument("/"));
    if (!isStoredDirectory(session, top)) refuseMissing(session, top);
    std::cout << coloured(utf8(top), true) << "\n";
    if (!session.hasDirectories()) return kDone;
    Way way(session);
    if (!way.show(top)) return kDone;
    std::vector<Branch> open = {{top, session.store().entries(top), 0}};
    while (!open.empty()) {
        Branch& branch = open.back();
        if (branch.next == branch.entries.size()) {
            open.pop_back();
            way.leave();
            continue;
        }
        for (std::size_t i = 0; i + 1 < open.size(); ++i)
            std::cout << (open[i].next < open[i].entries.size() ? "│   " : "    ");
        const Store::Entry entry = branch.entries[branch.next++];
        std::cout << (branch.next < branch.entries.size() ? "├── " : "└── ")
                  << coloured(utf8(entry.name) + (entry.directory ? "/" : ""), entry.directory)
                  << "\n";
        if (!entry.directory) continue;
        const std::wstring path = joined(branch.path, entry.name);
        if (way.show(path)) open.push_back({path, session.store().entries(path), 0});
    }
    return kDone;
}

}  // namespace mor::tool
