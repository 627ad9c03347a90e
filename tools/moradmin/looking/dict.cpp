#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/looking/foreign.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// The object under a path of names; names may hold slashes themselves.
DictionaryEntry findObject(const Session& session, const std::string& path) {
    DictionaryEntry at{"/", "", "DICTIONARY", rootDictionary(session.document())};
    if (at.object.isNone())
        throw Failure(kRefused, session.message("the drawing has no dictionaries"));
    std::string rest = path.starts_with('/') ? path.substr(1) : path;
    while (!rest.empty()) {
        const std::vector<DictionaryEntry> entries =
            dictionaryEntries(session.document(), at.object);
        const auto found = std::ranges::find_if(entries, [&rest](const DictionaryEntry& entry) {
            return rest == entry.name || rest.starts_with(entry.name + "/");
        });
        if (found == entries.end()) {
            std::vector<std::string> names;
            names.reserve(entries.size());
            for (const DictionaryEntry& entry : entries) names.push_back(entry.name);
            throw Failure(kRefused,
                          session.message("no dictionary has " + rest + hintFor(rest, names)),
                          path);
        }
        rest = rest.size() == found->name.size() ? "" : rest.substr(found->name.size() + 1);
        at = *found;
    }
    return at;
}

void printEntries(const Options& options, const std::vector<DictionaryEntry>& entries,
                  const std::string& path) {
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = path;
        object["entries"] = Json::array();
        for (const DictionaryEntry& entry : entries)
            object["entries"].push_back({{"name", entry.name},
                                         {"type", textOrNull(entry.type)},
                                         {"handle", textOrNull(entry.handle)}});
        object["groups"] = nullptr;
        printJson(object);
        return;
    }
    std::vector<std::vector<std::string>> rows;
    rows.reserve(entries.size());
    for (const DictionaryEntry& entry : entries)
        rows.push_back({entry.handle.empty() ? "-" : entry.handle,
                        entry.type.empty() ? "-" : entry.type,
                        entry.name + (entry.type == "DICTIONARY" ? "/" : "")});
    printTable({"HANDLE", "TYPE", "NAME"}, rows);
}

}  // namespace

int runDict(Session& session, const Options& options) {
    const std::string path = options.argument("/");
    const DictionaryEntry object = findObject(session, path);
    if (object.type == "DICTIONARY" || object.type == "ACDBDICTIONARYWDFLT") {
        printEntries(options, dictionaryEntries(session.document(), object.object), path);
        return kDone;
    }
    const std::vector<host::RecordGroup> groups =
        object.object.isNone() ? std::vector<host::RecordGroup>()
                               : host::recordGroups(session.document(), object.object);
    if (options.json) {
        Json shown = jsonHead(options);
        shown["path"] = path;
        shown["entries"] = nullptr;
        shown["groups"] = Json::array();
        for (const host::RecordGroup& group : groups) shown["groups"].push_back(groupJson(group));
        printJson(shown);
        return kDone;
    }
    for (const host::RecordGroup& group : groups)
        std::cout << group.code << "\t" << oneLine(group.value) << "\n";
    return kDone;
}

}  // namespace mor::tool
