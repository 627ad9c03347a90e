#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/subtree.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

namespace {

[[noreturn]] void refuseJson(const std::string& text) {
    throw Failure(kUsage, "this is no dump of a store: " + oneLine(text));
}

CMORAdsLispVar valueFromJson(const Json& entry, const std::string& name) {
    if (!entry.contains("lisp") || !entry["lisp"].is_string())
        refuseJson("the file " + name + " has no \"lisp\"");
    auto value = host::readLisp(entry["lisp"].get<std::string>(), host::UnknownHandles::Keep);
    if (!value) refuseJson("the value of " + name + ": " + value.error().message());
    if (CMORAdsLisp::NilP(value.value())) refuseJson("the value of " + name + " is nil");
    return value.value();
}

/// A text of an object; empty when it is missing.
std::string textIn(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) return {};
    if (!found->is_string()) refuseJson("\"" + std::string(key) + "\" is no text");
    return found->get<std::string>();
}

/// The entries of a dump or a directory of it.
const Json& entriesIn(const Json& object) {
    static const Json none = Json::array();
    const auto found = object.find("entries");
    if (found != object.end() && !found->is_array()) refuseJson("\"entries\" is no array");
    return found == object.end() ? none : *found;
}

/// The names of one directory's entries. A directory x hides the files x and >x.
class EntryNames {
public:
    /// False for a name that is taken.
    bool take(const std::wstring& name, bool isDirectory) {
        if (isDirectory) return !m_hidden.contains(name) && m_directories.insert(name).second;
        const std::wstring plain(withoutArrow(name));
        m_hidden.insert(plain);
        return !m_directories.contains(plain) && m_files.insert(name).second;
    }

private:
    std::set<std::wstring> m_directories;
    std::set<std::wstring> m_files;
    std::set<std::wstring> m_hidden;  // by a directory of that name
};

void collectJson(const Json& entries, const std::wstring& directory, std::vector<Stored>& items) {
    EntryNames names;
    for (const Json& entry : entries) {
        if (!entry.is_object() || !entry.contains("name")) refuseJson("an entry has no \"name\"");
        const std::string name = textIn(entry, "name");
        const std::string kind = textIn(entry, "kind");
        const bool isDirectory = kind == "directory";
        const std::wstring wideName = wide(name);
        if (isDirectory ? !isDirName(wideName) : !isFileName(wideName))
            refuseJson("\"" + name + "\" is no valid name");
        const std::wstring path = joined(directory, wideName);
        if (path.size() > kMaxPathLength) refuseJson(kPathLimit);
        if (!isDirectory && directory == L"/")
            refuseJson("the file " + name + " lies in the root; files lie in directories");
        if (!names.take(wideName, isDirectory))
            refuseJson("two entries of " + utf8(directory) + " have the name " + name);
        if (isDirectory) {
            items.push_back({path, true, {}});
            collectJson(entriesIn(entry), path, items);
        } else if (kind == "file") {
            items.push_back({path, false, valueFromJson(entry, name)});
        } else {
            refuseJson("the entry " + name + " is neither \"file\" nor \"directory\"");
        }
    }
}

/// Every directory takes two levels, and paths have at most 1023 characters. Deeper ones would take
/// the machine's stack.
constexpr int kDeepestDump = 2000;

/// "line 3, column 7" of a byte, counted from 1.
std::string placeIn(const std::string& text, std::size_t byte) {
    const std::string_view before = std::string_view(text).substr(0, byte == 0 ? 0 : byte - 1);
    const std::size_t begin = before.rfind('\n');
    return "line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", column " +
           std::to_string(before.size() - (begin == std::string_view::npos ? 0 : begin + 1) + 1);
}

Json parseDump(const std::string& text) {
    const Json::parser_callback_t limit = [](int depth, Json::parse_event_t, Json&) {
        if (depth > kDeepestDump) refuseJson("it is nested too deeply");
        return true;
    };
    Json object;
    try {
        object = Json::parse(text, limit);
    } catch (const Json::parse_error& error) {
        refuseJson(placeIn(text, error.byte) +
                   " is no JSON; \"moradmin dump DRAWING > FILE\" makes one");
    }
    if (!object.is_object() || !object.contains("schema") || object["schema"] != kDumpSchema ||
        textIn(object, "command") != "dump")
        refuseJson(
            "\"command\": \"dump\" and \"schema\": 1 are missing; \"moradmin dump\" prints them");
    return object;
}

}  // namespace

int runLoad(Session& session, const Options& options) {
    const Json object = parseDump(readText(options.argument("-")));
    const std::string top = textIn(object, "path");
    const std::wstring path = directoryPath(session, top.empty() ? "/" : top);
    session.refuseDamagedStore();
    std::vector<Stored> items;
    collectJson(entriesIn(object), path, items);
    storeBelow(session, items, path, options.replace);
    return kDone;
}

}  // namespace mor::tool
