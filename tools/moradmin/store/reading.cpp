#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "platform/output_calls.h"
#include "platform/types.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/way.h"

#include <iostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kLongestCandidate = 127;

/// A file's value; the caller has made sure that it is there.
CMORAdsLispVar valueOf(Session& session, const std::wstring& path) {
    CMORAdsLispVar value;
    if (!session.store().read(path.c_str(), value))
        throw Failure(kRefused, session.message(utf8(path) + " cannot be read"), utf8(path));
    return value;
}

Json valueJson(const Options& options, const std::wstring& path, const CMORAdsLispVar& value) {
    Json object = jsonHead(options);
    object["path"] = utf8(path);
    object["type"] = typeName(value);
    object["lisp"] = host::lispText(value);
    object["value"] = jsonValue(value);
    return object;
}

/// One line of a listing.
struct Listed {
    std::wstring path;
    std::wstring name;  // as it is shown: relative to the directory listed
    bool directory = false;
};

/// Lists the directory entered last and, when asked to, everything below it.
void collect(Session& session, const std::wstring& directory, const std::wstring& prefix,
             bool recursive, Way& way, std::vector<Listed>& listed) {
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        listed.push_back({path, prefix + entry.name, entry.directory});
        if (!recursive || !entry.directory || !way.show(path)) continue;
        collect(session, path, prefix + entry.name + L"/", recursive, way, listed);
        way.leave();
    }
}

Json listedJson(Session& session, const Listed& item) {
    Json object{{"path", utf8(item.path)}, {"name", utf8(nameOf(item.path))}};
    object["kind"] = item.directory ? "directory" : "file";
    if (item.directory) {
        object["free"] = session.store().getFreeMem(item.path.c_str());
        object["used"] = host::kRoomPerRecord - object["free"].get<long>();
    } else {
        object["type"] = typeName(valueOf(session, item.path));
        object["used"] = session.store().getUsedMem(item.path.c_str());
    }
    return object;
}

void printListed(Session& session, const Options& options, const std::vector<Listed>& listed,
                 const std::wstring& path) {
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = utf8(path);
        object["entries"] = Json::array();
        for (const Listed& item : listed) object["entries"].push_back(listedJson(session, item));
        printJson(object);
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Listed& item : listed) {
        const std::string name = utf8(item.name) + (item.directory ? "/" : "");
        if (!options.longListing) {
            std::cout << coloured(name, item.directory) << "\n";
            continue;
        }
        const Json facts = listedJson(session, item);
        rows.push_back({item.directory ? "dir" : facts["type"].get<std::string>(),
                        std::to_string(facts["used"].get<long>()),
                        item.directory ? std::to_string(facts["free"].get<long>()) : "-", name});
    }
    if (options.longListing) printTable({"TYPE", ">USED", ">FREE", "NAME"}, rows);
}

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

struct StoreTotals {
    std::size_t files = 0;
    long bytes = 0;
};

StoreTotals totalsOf(const StoreState& state) {
    StoreTotals totals;
    for (std::size_t i = 0; i < state.reachable; ++i)
        for (const host::RecordAttribute& item : state.directories[i].attributes.items) {
            if (!isFileName(item.name)) continue;
            ++totals.files;
            totals.bytes += item.bytes;
        }
    return totals;
}

const char* stateName(StoreState::Kind kind) {
    switch (kind) {
        case StoreState::Kind::None:
            return "none";
        case StoreState::Kind::Empty:
            return "empty";
        case StoreState::Kind::Sound:
            return "sound";
        case StoreState::Kind::Broken:
            return "damaged";
    }
    return "none";
}

}  // namespace

int runInfo(Session& session, const Options& options) {
    const StoreState& state = session.state();
    const host::DocumentInfo& info = session.info();
    const std::string path = session.reference().empty() ? session.file() : info.path.string();
    const StoreTotals totals = totalsOf(state);
    Json object = jsonHead(options);
    object["path"] = path;
    if (!session.reference().empty()) object["reference"] = utf8(session.reference());
    object["release"] = host::releaseName(info.release);
    object["version"] = info.version;
    object["codePage"] = info.codePage;
    object["encoding"] = info.encoding;
    object["lineEnd"] = info.lineEnd;
    object["bytes"] = info.bytes;
    object["records"] = info.records;
    object["store"] = {{"state", stateName(state.kind)},
                       {"directories", state.reachable},
                       {"files", totals.files},
                       {"used", totals.bytes},
                       {"findings", state.findings.size()}};
    if (options.json) {
        printJson(object);
        return kDone;
    }
    std::cout << "drawing   " << oneLine(path) << "\n"
              << "release   " << host::releaseName(info.release) << " ("
              << (info.version.empty() ? "no $ACADVER" : oneLine(info.version)) << ")\n"
              << "text      " << info.encoding << ", " << info.lineEnd << "\n"
              << "size      " << info.bytes << " bytes, " << info.records << " records\n"
              << "store     " << stateName(state.kind) << ", " << state.reachable
              << " directories, " << totals.files << " files, " << totals.bytes
              << " bytes in files\n";
    for (const Finding& finding : state.findings)
        std::cout << "finding   " << finding.code << " " << oneLine(utf8(finding.path)) << ": "
                  << oneLine(finding.message) << "\n";
    return kDone;
}

int runCat(Session& session, const Options& options) {
    std::vector<std::wstring> paths;
    for (const std::string& word : options.arguments) paths.push_back(filePath(session, word));
    for (const std::wstring& path : paths) {
        if (!isStoredFile(session, path)) refuseMissing(session, path);
        const CMORAdsLispVar value = valueOf(session, path);
        if (options.json)
            printJson(valueJson(options, path, value));
        else if (options.raw && CMORAdsLisp::StringP(value))
            std::cout << utf8(host::stringOf(value)) << "\n";
        else
            std::cout << host::lispText(value) << "\n";
    }
    return kDone;
}

int runLs(Session& session, const Options& options) {
    const std::string word = options.argument("/");
    const bool stored = session.hasDirectories();
    std::vector<Listed> listed;
    std::wstring path = wide(word);
    if (isStoredFile(session, path)) {
        listed.push_back({path, path, false});
    } else {
        path = directoryPath(session, word);
        const bool there = path == L"/" || (stored && session.store().isDirectory(path.c_str()));
        if (!there)
            throw Failure(kRefused, session.message(utf8(path) + " is not there"), utf8(path));
        Way way(session);
        if (stored && way.show(path)) collect(session, path, L"", options.recursive, way, listed);
    }
    printListed(session, options, listed, path);
    return kDone;
}

int runFind(Session& session, const Options& options) {
    const std::wstring pattern = wide(options.argument());
    if (!pattern.starts_with(L'/'))
        throw Failure(kRefused, session.message("a pattern begins with /, as in /cfg/*/x"),
                      options.argument());
    if (pattern.size() > kMaxPathLength)
        throw Failure(kRefused, session.message("a pattern has at most 1023 characters"),
                      options.argument());
    CMORAdsLispVar found;
    if (session.hasDirectories()) {
        if (!session.store().readAllMatchingFiles(pattern.c_str(), found))
            throw Failure(kRefused, session.message("the store cannot be walked"),
                          options.argument());
        nameSkipped(session, pattern);
    }
    const std::vector<CMORAdsLispVar> matches = host::elementsOf(found);
    for (const CMORAdsLispVar& match : matches) {
        const std::wstring path = host::stringOf(CMORAdsLisp::Nth(0, match));
        const CMORAdsLispVar value = CMORAdsLisp::Nth(1, match);
        if (options.json)
            printJson(valueJson(options, path, value));
        else if (options.values)
            std::cout << utf8(path) << "\t" << host::lispText(value) << "\n";
        else
            std::cout << utf8(path) << "\n";
    }
    return matches.empty() ? kNo : kDone;
}

int runDf(Session& session, const Options& options) {
    const StoreState& state = session.safeState();
    Json directories = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < state.reachable; ++i) {
        const std::wstring& path = state.directories[i].path;
        const long free = session.store().getFreeMem(path.c_str());
        const std::size_t entries = session.store().entries(path).size();
        const long used = host::kRoomPerRecord - free;
        directories.push_back(
            {{"path", utf8(path)}, {"used", used}, {"free", free}, {"entries", entries}});
        rows.push_back(
            {std::to_string(used), std::to_string(free), std::to_string(entries), utf8(path)});
    }
    if (options.json) {
        Json object = jsonHead(options);
        object["directories"] = std::move(directories);
        printJson(object);
    } else {
        printTable({">USED", ">FREE", ">ENTRIES", "PATH"}, rows);
    }
    return kDone;
}

}  // namespace mor::tool
