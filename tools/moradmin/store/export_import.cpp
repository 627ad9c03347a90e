#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/files.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/subtree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace mor::tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kText = ".txt";
constexpr const char* kLisp = ".lisp";
constexpr std::string_view kArrow = "%3E";  // what stands in front of some names

std::string withoutArrow(const std::string& name) {
    return name.starts_with('>') ? std::string(kArrow) + name.substr(1) : name;
}

void writeValue(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    if (!file) throw Failure(kUnwritable, path.string() + ": cannot be written", path.string());
}

void makeFolder(const fs::path& path) {
    std::error_code code;
    fs::create_directories(path, code);
    if (code) throw Failure(kUnwritable, path.string() + ": " + code.message(), path.string());
}

/// The part of a path below a directory, as a path on disk.
fs::path onDisk(const fs::path& folder, const std::wstring& path, const std::wstring& top) {
    const std::wstring rest = path.substr(top == L"/" ? 1 : top.size() + 1);
    return folder / utf8(rest);
}

/// What lies in a folder and below, as items of a store below `directory`. What begins with a dot
/// belongs to other programs.
void collectFolder(const fs::path& folder, const std::wstring& directory,
                   std::vector<Stored>& items) {
    std::vector<fs::path> entries;
    std::error_code code;
    for (fs::directory_iterator at(folder, code), end; !code && at != end; at.increment(code))
        if (!at->path().filename().string().starts_with('.')) entries.push_back(at->path());
    if (code)
        throw Failure(kUsage,
                      folder.string() + (!fs::exists(folder, code) ? ": there is no such folder"
                                         : !fs::is_directory(folder, code)
                                             ? ": is a file; \"moradmin export\" makes folders"
                                             : ": the folder cannot be read"),
                      folder.string());
    std::ranges::sort(entries);
    for (const fs::path& entry : entries) {
        if (fs::is_directory(entry, code)) {
            const std::wstring name = wide(entry.filename().string());
            if (!isDirName(name))
                throw Failure(kUsage, entry.string() + ": is no name of a directory of a store",
                              entry.string());
            const std::wstring path = joined(directory, name);
            items.push_back({path, true, {}});
            collectFolder(entry, path, items);
            continue;
        }
        NamedValue named = valueFromFile(entry.string());
        if (directory == L"/")
            throw Failure(kUsage,
                          entry.string() +
                              ": files lie in directories; give a path, as in "
                              "DRAWING:/cfg",
                          entry.string());
        const std::wstring path = joined(directory, named.name);
        const bool doubled =
            std::ranges::any_of(items, [&path](const Stored& item) { return item.path == path; });
        if (doubled)
            throw Failure(kUsage, entry.string() + ": there is a value of that name already",
                          entry.string());
        items.push_back({path, false, std::move(named.value)});
    }
}

}  // namespace

ValueFile valueFile(const std::wstring& name, const CMORAdsLispVar& value) {
    const std::string shown = withoutArrow(utf8(name));
    if (host::kindOf(value) == host::ValueKind::String) {
        const std::wstring text = host::stringOf(value);
        const std::string bytes = utf8(text);
        if (host::fromUtf8(bytes) == text) return {shown + kText, bytes};
    }
    return {shown + kLisp, host::lispText(value) + "\n"};
}

NamedValue valueFromFile(const std::string& path) {
    const fs::path file(path);
    std::string name = file.stem().string();
    if (name.starts_with(kArrow)) name = ">" + name.substr(kArrow.size());
    NamedValue named{wide(name), {}};
    if (!isFileName(named.name))
        throw Failure(kUsage, path + ": is no name of a file of a store", path);
    if (file.extension() == kText) {
        named.value = host::makeString(wide(readText(path)));
        return named;
    }
    if (file.extension() != kLisp)
        throw Failure(kUsage, path + ": values are NAME.txt, a text, or NAME.lisp, LISP text",
                      path);
    auto value = host::readLisp(readText(path), host::UnknownHandles::Keep);
    if (!value) throw Failure(kUsage, path + ": " + value.error().message(), path);
    if (CMORAdsLisp::NilP(value.value())) throw Failure(kUsage, path + ": nil is no value", path);
    named.value = value.value();
    return named;
}

int runExport(Session& session, const Options& options) {
    const fs::path folder = options.arguments[0];
    const std::wstring top =
        directoryPath(session, options.arguments.size() > 1 ? options.arguments[1] : "/");
    session.refuseDamagedStore();
    if (!isStoredDirectory(session, top)) refuseMissing(session, top);
    std::error_code code;
    if (fs::exists(folder, code) && !(fs::is_directory(folder, code) && fs::is_empty(folder, code)))
        throw Failure(kUnwritable, folder.string() + ": is there already and is not empty",
                      folder.string());
    const std::vector<Stored> items = everythingBelow(session, top);
    makeFolder(folder);
    std::size_t files = 0;
    for (const Stored& item : items) {
        const fs::path path = onDisk(folder, item.path, top);
        if (item.directory) {
            makeFolder(path);
            continue;
        }
        const ValueFile file = valueFile(nameOf(item.path), item.value);
        writeValue(path.parent_path() / file.name, file.bytes);
        ++files;
    }
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = utf8(top);
        object["folder"] = folder.string();
        object["directories"] = items.size() - files;
        object["files"] = files;
        printJson(object);
    }
    return kDone;
}

int runImport(Session& session, const Options& options) {
    const std::wstring top =
        directoryPath(session, options.arguments.size() > 1 ? options.arguments[1] : "/");
    session.refuseDamagedStore();
    std::vector<Stored> items;
    collectFolder(options.arguments[0], top, items);
    storeBelow(session, items, top, options.replace);
    return kDone;
}

}  // namespace mor::tool
