// What does one access to the store cost, once its directory is known, whatever the drawing's size?

#include "bench/generated_drawing.h"
#include "dwgfs/dwg_file_system.h"
#include "frame/message_system.h"
#include "frame/module.h"
#include "host/host.h"

#include <benchmark/benchmark.h>

namespace mor::bench {
namespace {

/// A generated drawing that is current and active, with one file in its store.
class OpenStore {
public:
    explicit OpenStore(std::size_t lines) : m_drawing(lines) {
        attachModule();
        m_document = host::openDocument(m_drawing.path()).value();
        host::setCurrentDocument(m_document);
        host::setActiveDocument(m_document);
        CMORCadDwgFileSystem::getTheGlobalObject()->write(kPath, host::makeInteger(1));
    }
    ~OpenStore() {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
        host::closeDocument(m_document);
        detachModule();
    }
    OpenStore(const OpenStore&) = delete;
    OpenStore& operator=(const OpenStore&) = delete;

    static constexpr const wchar_t* kPath = L"/cfg/user/tools/x";

private:
    GeneratedDrawing m_drawing;
    AcApDocument* m_document = nullptr;
};

void readFile(benchmark::State& state) {
    const OpenStore store(static_cast<std::size_t>(state.range(0)));
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    CMORAdsLispVar value;
    for ([[maybe_unused]] auto step : state)
        if (!files.read(OpenStore::kPath, value)) state.SkipWithError("the file is gone");
}

void writeFile(benchmark::State& state) {
    const OpenStore store(static_cast<std::size_t>(state.range(0)));
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    int number = 0;
    for ([[maybe_unused]] auto step : state)
        if (!files.write(OpenStore::kPath, host::makeInteger(++number)))
            state.SkipWithError("the file cannot be written");
}

void matchFiles(benchmark::State& state) {
    const OpenStore store(1000);
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    for (int i = 0; i < state.range(0); ++i)
        files.write((L"/cfg/d" + std::to_wstring(i) + L"/x").c_str(), host::makeInteger(i));
    for ([[maybe_unused]] auto step : state) {
        CMORAdsLispVar found;
        if (!files.readAllMatchingFiles(L"/cfg/*/x", found)) state.SkipWithError("no root");
        benchmark::DoNotOptimize(found);
    }
    state.SetComplexityN(state.range(0));
}

BENCHMARK(readFile)->Arg(1000)->Arg(100000);
BENCHMARK(writeFile)->Arg(1000)->Arg(100000);
BENCHMARK(matchFiles)->RangeMultiplier(4)->Range(16, 256)->Complexity();

}  // namespace
}  // namespace mor::bench
