#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/removing.h"
#include "tools/moradmin/store/storing.h"

#include <algorithm>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kHandleDigits = 16;  // at most

CMORAdsLispVar parsedValue(const std::string& text) {
    auto value = host::readLisp(text);
    if (!value) throw Failure(kUsage, "the value is no LISP text: " + value.error().message());
    if (CMORAdsLisp::NilP(value.value()))
        throw Failure(
            kUsage,
            "nil cannot be stored, it would remove the file; \"moradmin rm\" removes files");
    return value.value();
}

CMORAdsLispVar wantedValue(const Options& options) {
    const bool given = options.arguments.size() > 1;
    if (given && options.fileValue)
        throw Failure(kUsage, "one value, please: on the command line or with --file FILE");
    if (!given && !options.fileValue)
        throw Failure(kUsage, "a value is missing: LISP text, - for stdin or --file FILE");
    std::string text = given ? options.arguments[1] : readInput(*options.fileValue);
    if (given && text == "-") text = readInput("-");
    return options.asString ? host::makeString(wide(text)) : parsedValue(text);
}

[[noreturn]] void refuse(const Session& session, const std::wstring& path,
                         const std::string& text) {
    throw Failure(kRefused, session.message(text), utf8(path));
}

/// A circle may lead to the root, where nothing reads files.
void refuseTheRoot(Session& session, const std::wstring& path) {
    const mor::EntityName directory = session.store().directoryName(parentOf(path));
    if (!directory.isNone() && directory == session.store().directoryName(L"/"))
        refuse(session, path,
               utf8(parentOf(path)) + " leads back to the root; files lie in directories");
}

/// Each directory on the way to `path`, then `path` itself, a directory.
std::vector<std::wstring> directoriesTo(const std::wstring& path) {
    std::vector<std::wstring> result;
    for (std::size_t end = path.find(L'/', 1); end != std::wstring::npos;
         end = path.find(L'/', end + 1))
        result.push_back(path.substr(0, end));
    if (path != L"/") result.push_back(path);
    return result;
}

/// Names of directories that files have: the library would refuse some of them only after making
/// others, and make a directory x beside a file >x that then is out of reach.
void refuseFilesOnTheWay(Session& session, const std::wstring& path) {
    for (const std::wstring& directory : directoriesTo(path)) {
        if (isStoredDirectory(session, directory)) continue;
        const std::wstring arrow = joined(parentOf(directory), L">" + nameOf(directory));
        for (const std::wstring& file : {directory, arrow})
            if (isStoredFile(session, file))
                refuse(session, path, utf8(file) + " is a file; a directory cannot have its name");
    }
}

/// The name of a file that a directory has.
void refuseDirectoryInTheWay(Session& session, const std::wstring& path) {
    const std::wstring name = nameOf(path);
    const std::wstring plain =
        joined(parentOf(path), name.starts_with(L'>') ? name.substr(1) : name);
    if (isStoredDirectory(session, plain))
        refuse(session, path, utf8(plain) + " is a directory; a file cannot have its name");
}

/// Says why a directory was not made, if it was not.
void explainMissingDirectory(Session& session, const std::wstring& path) {
    const auto store = Session::freshStore();
    std::wstring made = L"/";
    for (const std::wstring& directory : directoriesTo(path)) {
        if (store->isDirectory(directory.c_str())) {
            made = directory;
            continue;
        }
        const long free = store->getFreeMem(made.c_str());
        const std::wstring link = L"^" + nameOf(directory);
        const std::string why =
            !host::hasFreeHandle(session.document()) ? "the drawing has no handle left for it"
            : free < host::attributeBytes(link, host::makeString(std::wstring(kHandleDigits, L'F')))
                ? std::to_string(free) + " bytes are free in " + utf8(made) + " for the link to it"
                : "the drawing refuses it";
        refuse(session, path, utf8(directory) + " cannot be made: " + why);
    }
}

/// Says why a write did not come about.
[[noreturn]] void explainRefusal(Session& session, const std::wstring& path,
                                 const CMORAdsLispVar& value) {
    explainMissingDirectory(session, parentOf(path));
    const auto store = Session::freshStore();
    const std::wstring made = parentOf(path);
    const long free =
        std::max(store->getFreeMem(made.c_str()) + store->getUsedMem(path.c_str()), 0L);
    const long needed = host::attributeBytes(nameOf(path), value);
    if (needed > free)
        refuse(session, path,
               utf8(path) + " does not fit: it takes " + std::to_string(needed) + " bytes, " +
                   std::to_string(free) + " are free in " + utf8(made));
    refuse(session, path,
           utf8(path) + " cannot be stored: a real is infinite, or a name is another drawing's");
}

host::Release releaseNamed(const std::string& name) {
    const auto release = host::releaseOfName(name);
    if (!release || *release == host::Release::R13 || *release == host::Release::R14)
        throw Failure(
            kUsage, "\"" + name + "\" is no release: R12 R2000 R2004 R2007 R2010 R2013 R2018 are");
    return *release;
}

}  // namespace

int runNew(const Options& options) {
    AcApDocument* document =
        host::createDocument(releaseNamed(options.release), options.crlf ? "\r\n" : "\n");
    host::SaveOptions how;
    how.output = options.drawing;
    how.overwrite = false;
    how.backup = false;
    const auto saved = host::saveDocument(document, how);
    host::closeDocument(document);
    if (!saved) throw Failure(saved.error());
    if (!saved.value().warning.empty()) printNote(options.drawing + ": " + saved.value().warning);
    return kDone;
}

void putValue(Session& session, const std::wstring& path, const CMORAdsLispVar& value) {
    refuseFilesOnTheWay(session, parentOf(path));
    refuseDirectoryInTheWay(session, path);
    refuseTheRoot(session, path);
    if (!session.store().write(path.c_str(), value)) explainRefusal(session, path, value);
    session.noteMade();
}

void confirmValue(Session& session, Store& fresh, const std::wstring& path,
                  const CMORAdsLispVar& value) {
    CMORAdsLispVar stored;
    if (!fresh.isFile(path.c_str()) || !fresh.read(path.c_str(), stored) ||
        !host::sameValue(stored, value))
        explainRefusal(session, path, value);
}

void putDirectory(Session& session, const std::wstring& path) {
    refuseFilesOnTheWay(session, path);
    if (session.store().makeDirectory(path) && Session::freshStore()->isDirectory(path.c_str())) {
        session.noteMade();
        return;
    }
    explainMissingDirectory(session, path);
    refuse(session, path, utf8(path) + " cannot be made");
}

int runPut(Session& session, const Options& options) {
    const std::wstring path = filePath(session, options.argument());
    const CMORAdsLispVar value = wantedValue(options);
    static_cast<void>(session.safeState());  // nothing may run on a damaged store
    putValue(session, path, value);
    confirmValue(session, *Session::freshStore(), path, value);
    return kDone;
}

namespace {

void removeNamed(Session& session, const std::wstring& path) {
    if (path == L"/")
        refuse(session, path,
               "the root directory cannot be removed; \"moradmin wipe\" empties a store");
    removeDirectory(session, path);
}

}  // namespace

int runRm(Session& session, const Options& options) {
    for (const std::string& word : options.arguments) {
        if (options.recursive && !isStoredFile(session, wide(word))) {
            const std::wstring directory = directoryPath(session, word);
            if (!isStoredDirectory(session, directory)) refuseMissing(session, directory);
            removeNamed(session, directory);
            continue;
        }
        const std::wstring path = filePath(session, word);
        if (!isStoredFile(session, path)) refuseMissing(session, path);
        if (!session.store().del(path.c_str()) || Session::freshStore()->isFile(path.c_str()))
            refuse(session, path, utf8(path) + " cannot be removed");
    }
    return kDone;
}

}  // namespace mor::tool
