// What does one access to the store cost, once its directory is known, whatever the drawing's size?
// What do ten thousand, in a drawing of 400 000 records? (sqlite_bench.cpp asks a peer the same.)

#include "bench/generated_drawing.h"
#include "dwgfs/dwg_file_system.h"
#include "frame/message_system.h"
#include "frame/module.h"
#include "host/host.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

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

    void save() {
        host::SaveOptions options;
        options.backup = false;
        static_cast<void>(host::saveDocument(m_document, options));
    }

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

constexpr std::size_t kManyLines = 400'000;
constexpr int kFolders = 100;
constexpr int kValues = 10'000;

std::vector<std::wstring> manyPaths() {
    std::vector<std::wstring> paths;
    paths.reserve(kValues);
    for (int i = 0; i < kValues; ++i)
        paths.push_back(L"/cfg/d" + std::to_wstring(i % kFolders) + L"/v" +
                        std::to_wstring(i / kFolders));
    return paths;
}

void writeAll(CMORCadDwgFileSystem& files, const std::vector<std::wstring>& paths, int first) {
    for (const std::wstring& path : paths) files.write(path.c_str(), host::makeInteger(first++));
}

void readOneOfMany(benchmark::State& state) {
    const OpenStore store(kManyLines);
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    const std::vector<std::wstring> paths = manyPaths();
    writeAll(files, paths, 0);
    CMORAdsLispVar value;
    std::size_t at = 0;
    for ([[maybe_unused]] auto step : state) {
        if (!files.read(paths[at].c_str(), value)) state.SkipWithError("the file is gone");
        at = (at + 7919) % paths.size();
    }
}

void writeOneOfMany(benchmark::State& state) {
    const OpenStore store(kManyLines);
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    const std::vector<std::wstring> paths = manyPaths();
    writeAll(files, paths, 0);
    std::size_t at = 0;
    int number = 0;
    for ([[maybe_unused]] auto step : state) {
        if (!files.write(paths[at].c_str(), host::makeInteger(++number)))
            state.SkipWithError("the file cannot be written");
        at = (at + 7919) % paths.size();
    }
}

/// Ten thousand writes of new values and one save (0: one write and one save, to compare).
void writeManyAndSave(benchmark::State& state) {
    OpenStore store(kManyLines);
    CMORCadDwgFileSystem& files = *CMORCadDwgFileSystem::getTheGlobalObject();
    const std::vector<std::wstring> paths = manyPaths();
    writeAll(files, paths, 0);
    store.save();
    int number = 0;
    for ([[maybe_unused]] auto step : state) {
        if (state.range(0) != 0)
            writeAll(files, paths, ++number);
        else
            files.write(paths[0].c_str(), host::makeInteger(++number));
        store.save();
    }
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
BENCHMARK(readOneOfMany);
BENCHMARK(writeOneOfMany);
BENCHMARK(writeManyAndSave)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(matchFiles)->RangeMultiplier(4)->Range(16, 256)->Complexity();

}  // namespace
}  // namespace mor::bench
