#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/patterns.h"
#include "tools/moradmin/store/values.h"
#include "tools/moradmin/store/way.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

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
        object["type"] = nullptr;
        object["free"] = session.store().getFreeMem(item.path.c_str());
        object["used"] = host::kRoomPerRecord - object["free"].get<long>();
    } else {
        object["type"] = typeName(valueOf(session, item.path));
        object["free"] = nullptr;
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

/// A directory's entries, or the file itself.
void listPath(Session& session, const Options& options, const std::wstring& path) {
    std::vector<Listed> listed;
    if (isStoredFile(session, path)) {
        listed.push_back({path, path, false});
    } else {
        if (!isStoredDirectory(session, path)) refuseMissing(session, path);
        Way way(session);
        const std::wstring prefix = options.recursive && path != L"/" ? path + L"/" : L"/";
        if (session.hasDirectories() && way.show(path))
            collect(session, path, options.recursive ? prefix : L"", options.recursive, way,
                    listed);
    }
    printListed(session, options, listed, path);
}

}  // namespace

int runLs(Session& session, const Options& options) {
    std::vector<std::string> words = options.arguments;
    if (words.empty()) words.emplace_back("/");
    for (const std::string& word : words) {
        if (isPathPattern(word)) {
            std::vector<Listed> listed;
            for (const Match& match : pathsMeant(session, word))
                listed.push_back({match.path, match.path, match.directory});
            printListed(session, options, listed, wide(word));
            continue;
        }
        const std::wstring path = wide(word);
        listPath(session, options,
                 isStoredFile(session, path) ? path : directoryPath(session, word));
    }
    return kDone;
}

}  // namespace mor::tool
