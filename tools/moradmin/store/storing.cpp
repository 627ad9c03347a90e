#include "tools/moradmin/store/storing.h"

#include "dwgfs/link_names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kHandleDigits = 16;  // at most

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
    for (std::wstring directory = path; !isStoredDirectory(session, directory);
         directory = parentOf(directory)) {  // those above one that is there are there, too
        const std::wstring arrow = joined(parentOf(directory), kFileArrow + nameOf(directory));
        for (const std::wstring& file : {directory, arrow})
            if (isStoredFile(session, file))
                refuse(session, path, utf8(file) + " is a file; a directory cannot have its name");
    }
}

/// The name of a file that a directory has.
void refuseDirectoryInTheWay(Session& session, const std::wstring& path) {
    const std::wstring plain = joined(parentOf(path), std::wstring(withoutArrow(nameOf(path))));
    if (isStoredDirectory(session, plain))
        refuse(session, path, utf8(plain) + " is a directory; a file cannot have its name");
}

/// Why nothing can be made, and what would help: the seed of handles is wrong, or one of them is.
std::string whyNoHandleIsLeft(const Session& session) {
    std::uint64_t highest = 0;
    std::uint64_t seed = 0;
    if (const auto asSaved = host::openDocument(session.file())) {
        seed = host::documentInfo(asSaved.value()).handleSeed;
        host::forEachRecord(asSaved.value(), [&highest](const host::RecordInfo& record) {
            highest = std::max(highest, record.handle);
        });
        host::closeDocument(asSaved.value());
    }
    const std::string why = "the drawing has no handle left for it: ";
    if (seed <= highest)
        return why + "the handle " + host::handleText(highest) +
               " is in use; let a CAD program number the handles anew";
    return why + "its $HANDSEED is " + host::handleText(seed) +
           ", though no handle is larger than " + host::handleText(highest) + "; set it to " +
           host::handleText(highest + 1);
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
        const std::wstring link = linkNameOf(nameOf(directory));
        const std::string why =
            !host::hasFreeHandle(session.document()) ? whyNoHandleIsLeft(session)
            : free < host::attributeBytes(link, host::makeString(std::wstring(kHandleDigits, L'F')))
                ? std::to_string(free) + " bytes are free in " + utf8(made) + " for the link to it"
                : "the drawing refuses it";
        refuse(session, path, utf8(directory) + " cannot be made: " + why);
    }
}

[[noreturn]] void explainRefusedDirectory(Session& session, const std::wstring& path) {
    explainMissingDirectory(session, path);
    refuse(session, path, utf8(path) + " cannot be made");
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

}  // namespace

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
    if (!session.store().makeDirectory(path)) explainRefusedDirectory(session, path);
    session.noteMade();
}

void confirmDirectory(Session& session, Store& fresh, const std::wstring& path) {
    if (!fresh.isDirectory(path.c_str())) explainRefusedDirectory(session, path);
}

}  // namespace mor::tool
