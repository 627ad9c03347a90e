#include "tools/moradmin/changes/fingerprint.h"
#include "tools/moradmin/changes/text_dump.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/subtree.h"
#include "tools/moradmin/store/way.h"

#include <iostream>
#include <string>

namespace mor::tool {

namespace {

/// The entries of a directory that was entered, as JSON; directories nest as deep as paths are
/// long.
Json entriesJson(Session& session, const std::wstring& directory, Way& way) {
    Json entries = Json::array();
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        Json object{{"name", utf8(entry.name)}};
        if (entry.directory) {
            object["kind"] = "directory";
            const bool entered = way.copy(path);
            object["entries"] = entered ? entriesJson(session, path, way) : Json::array();
            if (entered) way.leave();
        } else {
            CMORAdsLispVar value;
            session.store().read(path.c_str(), value);
            object["kind"] = "file";
            addValue(object, value);
        }
        entries.push_back(std::move(object));
    }
    return entries;
}

int dumpText(Session& session, const Options& options, const std::wstring& path) {
    if (options.json) throw Failure(kUsage, "--text or --json, please");
    TextDump dump;
    dump.contents = contentsOf(session.safeState());
    if (path != L"/")
        std::erase_if(dump.contents,
                      [&](const auto& item) { return !item.first.starts_with(path + L"/"); });
    // Of a reference the store alone: what is open is the drawing that refers to it.
    if (session.reference().empty()) dump.outside = outsideOf(session.document());
    printTextDump(dump);
    return kDone;
}

}  // namespace

int runDump(Session& session, const Options& options) {
    const std::wstring path = directoryPath(session, options.argument("/"));
    const bool stored = session.hasDirectories();
    if (!isStoredDirectory(session, path)) refuseMissing(session, path);
    if (options.text) return dumpText(session, options, path);
    Json object = jsonHead(options);
    // Of one drawing it says nothing but what is stored: equal stores have equal dumps.
    if (options.drawings.size() < 2 && !options.folders) object.erase("drawing");
    object["schema"] = kDumpSchema;
    object["path"] = utf8(path);
    Way way(session);
    const bool entered = stored && way.copy(path);
    object["entries"] = entered ? entriesJson(session, path, way) : Json::array();
    std::cout << object.dump(1, ' ', false, Json::error_handler_t::replace) << "\n";
    return kDone;
}

}  // namespace mor::tool
