#include "tools/moradmin/dump.h"

#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/paths.h"
#include "tools/moradmin/storing.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace mor::tool {

namespace {

constexpr int kSchema = 1;

/// The entries of a directory that was entered, as JSON; directories nest as deep as paths are
/// long.
Json entriesJson(Session& session, const std::wstring& directory, Way& way) {
    Json entries = Json::array();
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        Json object{{"name", utf8(entry.name)}};
        if (entry.directory) {
            object["kind"] = "directory";
            const bool entered = way.enter(session.store(), path);
            object["entries"] = entered ? entriesJson(session, path, way) : Json::array();
            if (entered) way.leave();
        } else {
            CMORAdsLispVar value;
            session.store().read(path.c_str(), value);
            object["kind"] = "file";
            object["type"] = typeName(value);
            object["lisp"] = host::lispText(value);
            object["value"] = jsonValue(value);
        }
        entries.push_back(std::move(object));
    }
    return entries;
}

void addBelow(Session& session, const std::wstring& directory, Way& way,
              std::vector<Stored>& items) {
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        Stored item{path, entry.directory, {}};
        if (!entry.directory) session.store().read(path.c_str(), item.value);
        items.push_back(std::move(item));
        if (!entry.directory || !way.enter(session.store(), path)) continue;
        addBelow(session, path, way, items);
        way.leave();
    }
}

[[noreturn]] void refuseJson(const std::string& text) {
    throw Failure(kUsage, "this is no dump of a store: " + text);
}

CMORAdsLispVar valueFromJson(const Json& entry, const std::string& name) {
    if (!entry.contains("lisp") || !entry["lisp"].is_string())
        refuseJson("the file " + name + " has no \"lisp\"");
    auto value = host::readLisp(entry["lisp"].get<std::string>(), host::UnknownHandles::Keep);
    if (!value) refuseJson("the value of " + name + ": " + value.error().message());
    if (CMORAdsLisp::NilP(value.value())) refuseJson("the value of " + name + " is nil");
    return value.value();
}

void collectJson(const Json& entries, const std::wstring& directory, std::vector<Stored>& items) {
    if (!entries.is_array()) refuseJson("\"entries\" is no array");
    for (const Json& entry : entries) {
        if (!entry.is_object() || !entry.contains("name") || !entry["name"].is_string())
            refuseJson("an entry has no \"name\"");
        const std::string name = entry["name"].get<std::string>();
        const bool isDirectory = entry.value("kind", "") == "directory";
        const std::wstring wideName = wide(name);
        if (isDirectory ? !isDirName(wideName) : !isFileName(wideName))
            refuseJson("\"" + name + "\" is no valid name");
        const std::wstring path = joined(directory, wideName);
        if (path.size() > kMaxPathLength) refuseJson("a path has more than 1023 characters");
        if (isDirectory) {
            items.push_back({path, true, {}});
            collectJson(entry.value("entries", Json::array()), path, items);
        } else if (entry.value("kind", "") == "file") {
            items.push_back({path, false, valueFromJson(entry, name)});
        } else {
            refuseJson("the entry " + name + " is neither \"file\" nor \"directory\"");
        }
    }
}

std::string inputText(const std::string& name) {
    if (name.empty() || name == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream file(name, std::ios::binary);
    if (!file) throw Failure(kUsage, name + ": cannot be read", name);
    return {std::istreambuf_iterator<char>(file), {}};
}

void removeEverything(Session& session, const std::wstring& directory) {
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        const bool done = entry.directory ? session.store().delDir(path.c_str())
                                          : session.store().del(path.c_str());
        if (!done)
            throw Failure(kRefused, session.message(utf8(path) + " cannot be removed"), utf8(path));
    }
}

}  // namespace

std::vector<Stored> everythingBelow(Session& session, const std::wstring& directory) {
    std::vector<Stored> items;
    Way way;
    if (session.hasDirectories() && way.enter(session.store(), directory))
        addBelow(session, directory, way, items);
    return items;
}

void storeAll(Session& session, const std::vector<Stored>& items, const std::wstring& from,
              const std::wstring& to) {
    const auto moved = [&](const std::wstring& path) {
        const std::wstring rest = from == L"/" ? path : path.substr(from.size());
        std::wstring target = (to == L"/" ? L"" : to) + rest;
        if (target.size() > kMaxPathLength)
            throw Failure(kRefused, session.message("a path would have more than 1023 characters"),
                          utf8(path));
        return target;
    };
    for (const Stored& item : items) {
        if (item.directory)
            putDirectory(session, moved(item.path));
        else
            putValue(session, moved(item.path), item.value);
    }
    const auto fresh = Session::freshStore();
    for (const Stored& item : items)
        if (!item.directory) confirmValue(session, *fresh, moved(item.path), item.value);
}

int runDump(Session& session, const Options& options) {
    const std::wstring path = directoryPath(session, options.argument("/"));
    const bool stored = session.hasDirectories();
    if (!isStoredDirectory(session, path)) refuseMissing(session, path);
    Json object = jsonHead(options);
    object["schema"] = kSchema;
    object["path"] = utf8(path);
    Way way;
    const bool entered = stored && way.enter(session.store(), path);
    object["entries"] = entered ? entriesJson(session, path, way) : Json::array();
    std::cout << object.dump(1, ' ', false, Json::error_handler_t::replace) << "\n";
    return kDone;
}

int runLoad(Session& session, const Options& options) {
    const Json object = Json::parse(inputText(options.argument()), nullptr, false);
    if (object.is_discarded()) refuseJson("it is no JSON");
    if (!object.is_object() || object.value("command", "") != "dump" ||
        object.value("schema", 0) != kSchema)
        refuseJson("\"command\": \"dump\" and \"schema\": 1 are missing");
    const std::wstring path = directoryPath(session, object.value("path", "/"));
    static_cast<void>(session.safeState());  // nothing may run on a damaged store
    std::vector<Stored> items;
    collectJson(object.value("entries", Json::array()), path, items);
    if (options.replace && isStoredDirectory(session, path) && session.hasDirectories())
        removeEverything(session, path);
    if (path != L"/") putDirectory(session, path);
    storeAll(session, items, L"/", L"/");
    return kDone;
}

}  // namespace mor::tool
