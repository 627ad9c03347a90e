#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/changes/report.h"
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

/// The path that an item has afterwards.
std::wstring moved(const Transfer& transfer, const std::wstring& path) {
    if (transfer.file) return transfer.to;
    const std::wstring rest = transfer.from == L"/" ? path : path.substr(transfer.from.size());
    return (transfer.to == L"/" ? L"" : transfer.to) + rest;
}

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

/// Takes what stands at the target already out of the transfer.
void keepTarget(Session& target, Transfer& transfer) {
    target.activate();
    std::erase_if(transfer.items, [&](const Stored& item) {
        const std::wstring path = moved(transfer, item.path);
        return isStoredFile(target, path) || (transfer.file && isStoredDirectory(target, path));
    });
}

void storeTarget(Session& target, const Transfer& transfer) {
    target.activate();
    target.refuseDamagedStore();
    if (transfer.items.empty() && transfer.file) return;
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

/// Whether a move is to leave everything as it is, because something stands at its target.
bool isKept(Session& target, const Options& options, const Transfer& transfer, bool move) {
    return options.keep && move &&
           (isStoredFile(target, transfer.to) || isStoredDirectory(target, transfer.to));
}

void transferIn(Session& session, const Spot& from, const Spot& to, const Options& options,
                bool move) {
    Transfer transfer = readSource(session, from.path);
    chooseTarget(session, to.path, transfer);
    refuseIntoItself(session, transfer);
    if (isKept(session, options, transfer, move)) return;
    if (options.keep) keepTarget(session, transfer);
    storeTarget(session, transfer);
    if (move) removeSource(session, transfer);
}

int transferWithin(const std::string& drawing, const Spot& from, const Spot& to,
                   const Options& options, bool move) {
    Session session(drawing);
    Options own = options;
    own.drawing = drawing;
    const ChangeReport report(session, own);
    transferIn(session, from, to, own, move);
    saveAndTell(session, own, report);
    return kDone;
}

int transferInScript(Session& session, const Options& options, bool move) {
    if (options.arguments.size() != 2)
        throw Failure(kUsage, options.command + ": two paths, please: FROM TO");
    transferIn(session, {session.file(), options.arguments[0]},
               {session.file(), options.arguments[1]}, options, move);
    return kDone;
}

int transferBetween(const Spot& from, const Spot& to, const Options& options, bool move) {
    Session source(from.drawing);
    Options sourceOptions = options;
    sourceOptions.drawing = from.drawing;
    sourceOptions.output.clear();
    const ChangeReport sourceReport(source, sourceOptions);
    Session target(to.drawing);
    Options targetOptions = options;
    targetOptions.drawing = to.drawing;
    const ChangeReport targetReport(target, targetOptions);
    Transfer transfer = readSource(source, from.path);
    refuseNames(source, transfer);
    target.activate();
    chooseTarget(target, to.path, transfer);
    if (isKept(target, options, transfer, move)) return kDone;
    if (options.keep) keepTarget(target, transfer);
    storeTarget(target, transfer);
    if (move) removeSource(source, transfer);
    target.activate();
    saveAndTell(target, targetOptions, targetReport);
    if (!move) return kDone;
    try {
        source.activate();
        saveAndTell(source, sourceOptions, sourceReport);
    } catch (const Failure& failure) {
        throw Failure(kUnwritable,
                      std::string(failure.what()) + "; the values stand in both drawings now, " +
                          to.drawing + " was saved before",
                      from.drawing);
    }
    return kDone;
}

/// A drawing from stdin is saved nowhere unless -o says where.
void refuseLostStream(const Options& options, const Spot& from, const Spot& to, bool move) {
    if (to.drawing == "-" && options.output.empty() && !options.dryRun)
        throw Failure(kUsage, "a drawing from stdin is saved to -o FILE, or to stdout with -o -");
    if (move && from.drawing == "-" && to.drawing != "-")
        throw Failure(kUsage, "nothing can be taken out of a drawing from stdin; cp copies it");
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
    refuseLostStream(options, from, to, move);
    if (sameFile(from.drawing, to.drawing))
        return transferWithin(from.drawing, from, to, options, move);
    return transferBetween(from, to, options, move);
}

}  // namespace

int runCp(const Options& options) { return transfer(options, false); }
int runMv(const Options& options) { return transfer(options, true); }
int runCpWithin(Session& session, const Options& options) {
    return transferInScript(session, options, false);
}
int runMvWithin(Session& session, const Options& options) {
    return transferInScript(session, options, true);
}

}  // namespace mor::tool
