#include "host/host.h"
#include "platform/output_calls.h"
#include "platform/types.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/patterns.h"
#include "tools/moradmin/store/values.h"

#include <iostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kLongestCandidate = 127;

/// Directories and files that the library's pattern walk skips because their paths are too long.
void nameSkipped(Session& session, const std::wstring& pattern) {
    std::vector<std::wstring> parts;
    for (std::size_t begin = 1, end = 0; end != std::wstring::npos; begin = end + 1) {
        end = pattern.find(L'/', begin);
        parts.push_back(pattern.substr(begin, end == std::wstring::npos ? end : end - begin));
    }
    std::vector<std::pair<std::wstring, std::size_t>> open = {{L"/", 0}};
    std::set<std::pair<mor::EntityName, std::size_t>> seen;
    while (!open.empty()) {
        const auto [directory, part] = open.back();
        open.pop_back();
        if (!seen.emplace(session.store().directoryName(directory), part).second) continue;
        for (const Store::Entry& entry : session.store().entries(directory)) {
            const bool last = part + 1 == parts.size();
            if (entry.directory == last ||
                acutWcMatch(entry.name.c_str(), parts[part].c_str()) != RTNORM)
                continue;
            const std::wstring path = joined(directory, entry.name);
            if (path.size() > kLongestCandidate)
                printNote(session.message("skipped, its path has more than 127 characters: " +
                                          utf8(path)));
            else if (!last)
                open.emplace_back(path, part + 1);
        }
    }
}

void printFile(const Options& options, const std::wstring& path, const CMORAdsLispVar& value) {
    if (options.json)
        printJson(valueJson(options, path, value));
    else if (options.values)
        std::cout << utf8(path) << "\t" << host::lispText(value) << "\n";
    else
        std::cout << utf8(path) << "\n";
}

int findDirectories(Session& session, const Options& options, const std::wstring& pattern) {
    bool found = false;
    for (const Match& match : pathsMatching(session, pattern)) {
        if (!match.directory) continue;
        found = true;
        if (!options.json) {
            std::cout << utf8(match.path) << "\n";
            continue;
        }
        Json object = jsonHead(options);
        object["path"] = utf8(match.path);
        object["kind"] = "directory";
        for (const char* key : {"type", "lisp", "value"}) object[key] = nullptr;
        printJson(object);
    }
    return found ? kDone : kNo;
}

/// A pattern that the library's walk does not know.
int findDeep(Session& session, const Options& options, const std::wstring& pattern) {
    bool found = false;
    for (const Match& match : pathsMatching(session, pattern)) {
        if (match.directory) continue;
        found = true;
        printFile(options, match.path, valueOf(session, match.path));
    }
    return found ? kDone : kNo;
}

}  // namespace

int runFind(Session& session, const Options& options) {
    const std::wstring pattern = wide(options.argument());
    refuseBadPattern(session, options.argument());
    if (options.kind == "d") return findDirectories(session, options, pattern);
    if (pattern.find(L"**") != std::wstring::npos) return findDeep(session, options, pattern);
    CMORAdsLispVar found;
    if (session.hasDirectories()) {
        if (!session.store().readAllMatchingFiles(pattern.c_str(), found))
            throw Failure(
                kRefused,
                session.message(
                    "the store cannot be searched; \"moradmin check\" says what is wrong"),
                options.argument());
        nameSkipped(session, pattern);
    }
    const std::vector<CMORAdsLispVar> matches = host::elementsOf(found);
    for (const CMORAdsLispVar& match : matches) {
        const std::wstring path = host::stringOf(CMORAdsLisp::Nth(0, match));
        const CMORAdsLispVar value = CMORAdsLisp::Nth(1, match);
        printFile(options, path, value);
    }
    return matches.empty() ? kNo : kDone;
}

}  // namespace mor::tool
