#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/subtree.h"

#include <iostream>
#include <map>
#include <string>

namespace mor::tool {

namespace {

/// What stands under one path: how it prints, and its bits.
struct Shown {
    bool directory = false;
    std::string lisp;
};

std::map<std::wstring, Shown> contents(Session& session, const std::wstring& path) {
    session.activate();
    std::map<std::wstring, Shown> result;
    if (!isStoredDirectory(session, path)) return result;
    for (const Stored& item : everythingBelow(session, path))
        result[item.path] = {item.directory, item.directory ? "" : host::lispText(item.value)};
    return result;
}

class Report {
public:
    explicit Report(const Options& options) : m_options(options) {}

    /// `directory`: what stands there, afterwards if anything does; null stands for nothing.
    void add(const char* mark, const char* kind, const std::wstring& path, bool directory,
             const Shown* before, const Shown* after) {
        ++m_count;
        const std::string name = utf8(path) + (directory ? "/" : "");
        if (m_options.json) {
            Json object = jsonHead(m_options);
            object["change"] = kind;
            object["path"] = utf8(path);
            object["before"] =
                before == nullptr || before->directory ? Json(nullptr) : Json(before->lisp);
            object["after"] =
                after == nullptr || after->directory ? Json(nullptr) : Json(after->lisp);
            printJson(object);
            return;
        }
        std::cout << mark << " " << name;
        if (before != nullptr && !before->directory) std::cout << "\t" << before->lisp;
        if (before != nullptr && after != nullptr) std::cout << "\t->";
        if (after != nullptr && !after->directory) std::cout << "\t" << after->lisp;
        std::cout << "\n";
    }
    [[nodiscard]] std::size_t count() const { return m_count; }

private:
    const Options& m_options;
    std::size_t m_count = 0;
};

}  // namespace

int runDiff(const Options& options) {
    Session first(options.drawing);
    Session second(options.argument());
    const std::string word = options.arguments.size() > 1 ? options.arguments[1] : "/";
    const std::wstring path = directoryPath(first, word);
    const auto before = contents(first, path);
    const auto after = contents(second, path);
    Report report(options);
    for (const auto& [name, shown] : before) {
        const auto other = after.find(name);
        if (other == after.end())
            report.add("-", "removed", name, shown.directory, &shown, nullptr);
        else if (other->second.lisp != shown.lisp || other->second.directory != shown.directory)
            report.add("~", "changed", name, other->second.directory, &shown, &other->second);
    }
    for (const auto& [name, shown] : after)
        if (!before.contains(name))
            report.add("+", "added", name, shown.directory, nullptr, &shown);
    return report.count() == 0 ? kDone : kNo;
}

}  // namespace mor::tool
