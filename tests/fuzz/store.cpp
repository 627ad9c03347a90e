#include "dwgfs/dwg_file_system.h"
#include "frame/message_system.h"
#include "frame/module.h"
#include "tests/fuzz/drawing_input.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using namespace mor;

const wchar_t* const kPaths[] = {L"/",      L"/a",    L"/a/b",   L"/a/x",     L"/a/b/x",
                                 L"/a/b/y", L"/a/>x", L"/c/d/e", L"/c/d/e/x", L"/a/b/c/d/e/f/x"};
const char* const kValues[] = {"1", "2.5", "\"text\"", "(1 (2 \"x\") . 3)", "(handent \"1\")"};

/// One operation; both letters choose.
void operate(CMORCadDwgFileSystem& store, char what, char with) {
    const auto number = static_cast<unsigned char>(with);
    const wchar_t* const path = kPaths[number % std::size(kPaths)];
    CMORAdsLispVar value;
    CMORStringList names;
    switch (what) {
        case 'w':
            value = host::readLisp(kValues[number % std::size(kValues)], host::UnknownHandles::Keep)
                        .value();
            if (store.write(path, value) && store.isFile(path)) {
                CMORAdsLispVar read;
                fuzz::require(store.read(path, read) && host::sameValue(read, value),
                              "what was written does not read back", host::lispText(read));
            }
            break;
        case 'r':
            static_cast<void>(store.read(path, value));
            static_cast<void>(store.getFreeMem(path) + store.getUsedMem(path));
            break;
        case 'd':
            static_cast<void>(store.del(path));
            break;
        case 'D':
            static_cast<void>(store.delDir(path));
            break;
        case 'l':
            static_cast<void>(store.getAllDirs(path, names) && store.getAllFiles(path, names));
            static_cast<void>(store.readAllMatchingFiles(L"/*/*", value));
            static_cast<void>(store.dir(path, true));
            break;
        case 'c':
            store.checkFileSystem();
            break;
        case 'z':
            store.removeFileSystem();
            break;
        default:
            break;
    }
}

/// Saves what is in memory: it must read back as it is.
void savesAndReadsBack(AcApDocument* document) {
    const auto output = fuzz::fileNamed("saved.dxf");
    const std::string before = fuzz::describe(document, fuzz::Records::Content);
    const auto saved = host::saveDocument(document, {.output = output, .backup = false});
    if (!saved) {
        fuzz::require(!saved.error().text.empty(), "refused without a reason");
        return;
    }
    const auto again = host::openDocument(output);
    fuzz::require(static_cast<bool>(again), "what was saved does not open");
    fuzz::require(!host::documentInfo(again.value()).damage, "what was saved is damaged");
    const std::string after = fuzz::describe(again.value(), fuzz::Records::Content);
    fuzz::require(before == after, "a save changed records", "\n" + before + "\n" + after);
    host::closeDocument(again.value());
}

}  // namespace

/// A line of operations, two letters each, on the drawing behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int s_attached = attachModule();
    fuzz::require(s_attached == 1, "the library does not start");
    const std::string_view input = fuzz::asText(data, size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string_view operations = input.substr(0, std::min<std::size_t>(end, 64));
    const auto path = fuzz::writeFile("input.dxf", input.substr(std::min(end + 1, size)));
    const auto document = host::openDocument(path, host::Opening::Salvaged);
    if (!document) return 0;
    host::setCurrentDocument(document.value());
    host::setActiveDocument(document.value());
    if (CMORCadDwgFileSystem* store = CMORCadDwgFileSystem::getTheGlobalObject())
        for (std::size_t i = 0; i + 1 < operations.size(); i += 2)
            operate(*store, operations[i], operations[i + 1]);
    fuzz::require(host::counters().locksHeld == 0, "a lock is still held");
    savesAndReadsBack(document.value());
    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    host::closeDocument(document.value());
    static_cast<void>(host::takePrintedText());
    return 0;
}
