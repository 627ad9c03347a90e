#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/removing.h"
#include "tools/moradmin/store/storing.h"
#include "tools/moradmin/store/subtree.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// A place in a drawing's store.
struct Spot {
    std::string drawing;
    std::string path;
};

/// "A.dxf:/cfg" as a drawing and a path.
std::optional<Spot> splitSpot(const std::string& word) {
    const std::size_t colon = word.rfind(":/");
    if (colon == std::string::npos || colon == 0) return std::nullopt;
    return Spot{word.substr(0, colon), word.substr(colon + 1)};
}

/// What is copied, and the path that it has afterwards.
struct Transfer {
    std::vector<Stored> items;
    std::wstring from;
    std::wstring to;
    bool file = false;
};

bool sameFile(const std::string& a, const std::string& b) {
    std::error_code code;
    return a == b || std::filesystem::equivalent(a, b, code);
}

Transfer readSource(Session& source, const std::string& word) {
    source.activate();
    Transfer transfer;
    const std::wstring path = wide(word);
    source.refuseDamagedStore();
    if (isStoredFile(source, path)) {
        Stored item{path, false, {}};
        source.store().read(path.c_str(), item.value);
        transfer.items.push_back(item);
        transfer.from = path;
        transfer.file = true;
        return transfer;
    }
    transfer.from = directoryPath(source, word);
    if (!isStoredDirectory(source, transfer.from)) refuseMissing(source, transfer.from);
    transfer.items = everythingBelow(source, transfer.from);
    return transfer;
}

/// Into a directory that exists the name is kept, as cp and mv do it; the root's contents go as
/// they are.
void chooseTarget(Session& target, const std::string& word, Transfer& transfer) {
    const std::wstring path = wide(word);
    const bool slash = path.size() > 1 && path.ends_with(L'/');
    const std::wstring bare = slash ? path.substr(0, path.size() - 1) : path;
    transfer.to = bare;
    if (transfer.from != L"/" && isDirPath(bare) && (slash || isStoredDirectory(target, bare)))
        transfer.to = joined(bare, nameOf(transfer.from));
    if (transfer.file)
        transfer.to = filePath(target, utf8(transfer.to));
    else
        transfer.to = directoryPath(target, utf8(transfer.to));
}

void storeTarget(Session& target, const Transfer& transfer) {
    target.activate();
    target.refuseDamagedStore();
    if (transfer.file) {
        putValue(target, transfer.to, transfer.items.front().value);
        confirmValue(target, *Session::freshStore(), transfer.to, transfer.items.front().value);
        return;
    }
    if (transfer.to != L"/") {
        putDirectory(target, transfer.to);
        confirmDirectory(target, *Session::freshStore(), transfer.to);
    }
    storeAll(target, transfer.items, transfer.from, transfer.to);
}

void removeSource(Session& source, const Transfer& transfer) {
    source.activate();
    if (transfer.from == kRootPath)
        refuse(source, transfer.from, "the root directory cannot be moved");
    if (transfer.file)
        removeFile(source, transfer.from);
    else
        removeDirectory(source, transfer.from);
}

/// Entity names mean nothing in another drawing.
void refuseNames(const Session& source, const Transfer& transfer) {
    for (const Stored& item : transfer.items)
        if (host::holdsEntityName(item.value))
            throw Failure(
                kRefused,
                source.message(utf8(item.path) +
                               " holds an entity name, which means nothing in another drawing"),
                utf8(item.path));
}

void refuseIntoItself(const Session& session, const Transfer& transfer) {
    const std::wstring below = transfer.from + L"/";
    if (transfer.to == transfer.from || transfer.to.starts_with(below))
        throw Failure(kRefused,
                      session.message(utf8(transfer.from) + " cannot go to itself or below itself"),
                      utf8(transfer.from));
}

int transferWithin(const std::string& drawing, const Spot& from, const Spot& to,
                   const Options& options, bool move) {
    Session session(drawing);
    Transfer transfer = readSource(session, from.path);
    chooseTarget(session, to.path, transfer);
    refuseIntoItself(session, transfer);
    storeTarget(session, transfer);
    if (move) removeSource(session, transfer);
    session.save(options);
    return kDone;
}

int transferBetween(const Spot& from, const Spot& to, const Options& options, bool move) {
    Session source(from.drawing);
    Session target(to.drawing);
    Transfer transfer = readSource(source, from.path);
    refuseNames(source, transfer);
    target.activate();
    chooseTarget(target, to.path, transfer);
    storeTarget(target, transfer);
    if (move) removeSource(source, transfer);
    target.activate();
    target.save(options);
    if (!move) return kDone;
    Options sourceOptions = options;
    sourceOptions.output.clear();
    try {
        source.activate();
        source.save(sourceOptions);
    } catch (const Failure& failure) {
        throw Failure(kUnwritable,
                      std::string(failure.what()) + "; the values stand in both drawings now, " +
                          to.drawing + " was saved before",
                      from.drawing);
    }
    return kDone;
}

int transfer(const Options& options, bool move) {
    const auto first = splitSpot(options.drawing);
    Spot from;
    Spot to;
    if (first) {
        const auto second = splitSpot(options.argument());
        if (!second || options.arguments.size() != 1)
            throw Failure(kUsage,
                          "two places, please: A.dxf:/FROM B.dxf:/TO, or a drawing and two paths");
        from = *first;
        to = *second;
    } else {
        if (options.arguments.size() != 2)
            throw Failure(kUsage, "a drawing and two paths, please, or A.dxf:/FROM B.dxf:/TO");
        from = {options.drawing, options.arguments[0]};
        to = {options.drawing, options.arguments[1]};
    }
    if (sameFile(from.drawing, to.drawing))
        return transferWithin(from.drawing, from, to, options, move);
    return transferBetween(from, to, options, move);
}

}  // namespace

int runCp(const Options& options) { return transfer(options, false); }
int runMv(const Options& options) { return transfer(options, true); }

}  // namespace mor::tool
