#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/paths.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

namespace mor::tool {

namespace {

std::string readInput(const std::string& name) {
    if (name == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream file(name, std::ios::binary);
    if (!file) throw Failure(kUsage, name + ": cannot be read", name);
    return {std::istreambuf_iterator<char>(file), {}};
}

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
    const int ways = (given ? 1 : 0) + (options.stringValue ? 1 : 0) + (options.fileValue ? 1 : 0);
    if (ways != 1)
        throw Failure(
            kUsage, ways == 0
                        ? "a value is missing: LISP text, --string TEXT, --file FILE or - for stdin"
                        : "one value, please: LISP text, --string TEXT or --file FILE");
    if (options.stringValue) return host::makeString(wide(*options.stringValue));
    if (options.fileValue) return parsedValue(readInput(*options.fileValue));
    const std::string& text = options.arguments[1];
    return parsedValue(text == "-" ? readInput("-") : text);
}

[[noreturn]] void refuse(const Session& session, const std::wstring& path,
                         const std::string& text) {
    throw Failure(kRefused, session.message(text), utf8(path));
}

/// Names that are taken by the other kind of entry: the library would refuse some of them only
/// after making directories, and make a directory x beside a file >x that then is out of reach.
void refuseTakenNames(const Session& session, const StoreState& state, const std::wstring& path) {
    std::wstring directory = L"/";
    for (std::size_t begin = 1;;) {
        const StoredDirectory* record = state.directory(directory);
        if (record == nullptr) return;
        const std::size_t end = path.find(L'/', begin);
        const std::wstring name = path.substr(begin, end == std::wstring::npos ? end : end - begin);
        const std::wstring plain = name.starts_with(L'>') ? name.substr(1) : name;
        const std::wstring full = joined(directory, name);
        if (end == std::wstring::npos) {
            if (record->find(L"^" + plain) != nullptr)
                refuse(session, path,
                       utf8(joined(directory, plain)) +
                           " is a directory; a file cannot have its name");
            return;
        }
        for (const std::wstring& file : {name, L">" + name})
            if (record->find(L"^" + name) == nullptr && record->find(file) != nullptr)
                refuse(
                    session, path,
                    utf8(joined(directory, file)) + " is a file; a directory cannot have its name");
        directory = full;
        begin = end + 1;
    }
}

/// Says why a write did not come about.
[[noreturn]] void explainRefusal(Session& session, const std::wstring& path,
                                 const CMORAdsLispVar& value) {
    const auto store = Session::freshStore();
    std::wstring made = L"/";
    for (std::size_t end = path.find(L'/', 1); end != std::wstring::npos;
         end = path.find(L'/', end + 1)) {
        const std::wstring directory = path.substr(0, end);
        if (!store->isDirectory(directory.c_str()))
            refuse(session, path,
                   utf8(directory) +
                       " cannot be made: " + std::to_string(store->getFreeMem(made.c_str())) +
                       " bytes are free in " + utf8(made) + " for the link to it");
        made = directory;
    }
    const long free = store->getFreeMem(made.c_str()) + store->getUsedMem(path.c_str());
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
    return kDone;
}

int runPut(Session& session, const Options& options) {
    const std::wstring path = filePath(session, options.argument());
    const CMORAdsLispVar value = wantedValue(options);
    refuseTakenNames(session, session.safeState(), path);
    if (!session.store().write(path.c_str(), value)) explainRefusal(session, path, value);
    CMORAdsLispVar stored;
    const auto fresh = Session::freshStore();
    if (!fresh->isFile(path.c_str()) || !fresh->read(path.c_str(), stored) ||
        !host::sameValue(stored, value))
        explainRefusal(session, path, value);
    return kDone;
}

int runRm(Session& session, const Options& options) {
    std::vector<std::wstring> paths;
    for (const std::string& word : options.arguments) paths.push_back(filePath(session, word));
    for (const std::wstring& path : paths) {
        if (!session.hasDirectories() || !session.store().isFile(path.c_str()) ||
            session.store().isDirectory(path.c_str()))
            refuseMissing(session, path);
        if (!session.store().del(path.c_str()) || Session::freshStore()->isFile(path.c_str()))
            refuse(session, path, utf8(path) + " cannot be removed");
    }
    return kDone;
}

}  // namespace mor::tool
