#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/changes/contents.h"
#include "tools/moradmin/changes/git.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/subtree.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// No drawing, as git names the side on which a file is absent: an empty store.
constexpr const char* kAbsent = "/dev/null";

Contents contentsBelow(Session& session, const std::wstring& path) {
    session.activate();
    Contents result;
    if (!isStoredDirectory(session, path)) return result;
    for (const Stored& item : everythingBelow(session, path))
        result[item.path] = {item.directory, item.directory ? "" : host::lispText(item.value)};
    return result;
}

Contents contentsOfFile(const std::string& file, const std::wstring& path) {
    if (file == kAbsent) return {};
    Session session(file);
    return contentsBelow(session, path);
}

int tell(const Options& options, const Contents& before, const Contents& after) {
    const std::vector<Difference> all = differences(before, after);
    for (const Difference& difference : all) {
        if (!options.json) {
            printDifference(std::cout, difference);
            continue;
        }
        Json object = jsonHead(options);
        addDifference(object, difference);
        printJson(object);
    }
    return all.empty() ? kDone : kNo;
}

std::wstring pathOf(const std::string& drawing, const std::string& word) {
    std::wstring path = wide(word);
    if (path.size() > 1 && path.ends_with(L'/')) path.pop_back();
    if (isDirPath(path)) return path;
    throw Failure(
        kRefused,
        drawing + ": \"" + word + "\" is no directory path; one begins with /, as in /cfg", word);
}

}  // namespace

int runDiff(const Options& options) {
    if (options.git) return diffForGit(options);
    if (options.arguments.size() > 2)
        throw Failure(kUsage, "two drawings, please, and perhaps a directory");
    const std::wstring path =
        pathOf(options.drawing, options.arguments.size() > 1 ? options.arguments[1] : "/");
    const Contents before = contentsOfFile(options.drawing, path);
    return tell(options, before, contentsOfFile(options.argument(), path));
}

int runDiffWithin(Session& session, const Options& options) {
    const std::string word = options.argument();
    const bool other = !word.empty() && !word.starts_with('/');
    const std::string file = other ? word : session.file();
    const std::size_t at = other ? 1 : 0;
    const std::wstring path =
        pathOf(session.file(), options.arguments.size() > at ? options.arguments[at] : "/");
    const Contents before = contentsOfFile(file, path);
    return tell(options, before, contentsBelow(session, path));
}

}  // namespace mor::tool
