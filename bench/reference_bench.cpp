// What does it cost to look into a large reference: its first handle, a later one, one layer of a
// thousand?

#include "bench/generated_drawing.h"
#include "frame/message_system.h"
#include "frame/module.h"
#include "host/host.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "platform/table_calls.h"
#include "space/space.h"
#include "xref/space_iterator.h"
#include "xref/xref_space.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

namespace mor::bench {
namespace {

constexpr std::size_t kLines = 1'000'000;  // 100 MB
constexpr std::size_t kLayers = 1000;
constexpr const wchar_t* kHandle = L"F4100";  // of one in the middle

/// A small drawing that inserts a large one as PLAN; current while it lives.
class LargeReference {
public:
    LargeReference() : m_plan(kLines, kLayers), m_path(m_plan.path().string() + ".host.dxf") {
        std::ofstream file(m_path, std::ios::binary);
        file << "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n8\n0\n2\nPLAN\n70\n4\n1\n"
             << m_plan.path().filename().string()
             << "\n0\nENDBLK\n8\n0\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n"
                "0\nINSERT\n5\nA1\n8\n0\n2\nPLAN\n0\nENDSEC\n0\nEOF\n";
        file.close();
        attachModule();
        m_document = host::openDocument(m_path).value();
        host::setCurrentDocument(m_document);
    }
    ~LargeReference() {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
        host::closeDocument(m_document);
        detachModule();
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    LargeReference(const LargeReference&) = delete;
    LargeReference& operator=(const LargeReference&) = delete;

    /// As if nothing of the reference had been touched yet.
    void reload() const {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
        host::reloadReference(m_document, L"PLAN");
    }
    static void touch() { const ResbufList record{acdbTblSearch(L"BLOCK", L"PLAN", 0)}; }

private:
    GeneratedDrawing m_plan;
    std::filesystem::path m_path;
    AcApDocument* m_document = nullptr;
};

void loadReference(benchmark::State& state) {
    const LargeReference reference;
    for ([[maybe_unused]] auto step : state) {
        reference.reload();
        LargeReference::touch();
    }
}

void firstHandle(benchmark::State& state) {
    const LargeReference reference;
    for ([[maybe_unused]] auto step : state) {
        state.PauseTiming();
        reference.reload();
        LargeReference::touch();
        state.ResumeTiming();
        ads_name name{};
        if (!mor_xref::HandEnt(L"PLAN", kHandle, name)) return state.SkipWithError("not found");
    }
}

void laterHandle(benchmark::State& state) {
    const LargeReference reference;
    ads_name name{};
    mor_xref::HandEnt(L"PLAN", kHandle, name);
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(mor_xref::HandEnt(L"PLAN", kHandle, name));
}

/// Goes through the entities on one layer; 0 when there are none.
std::size_t walkLayer(const CMORCadSpace& space) {
    CMORStringList layer;
    layer.Append(L"WALLS77");
    MOR_SpaceIterator next(space, layer);
    std::size_t count = 0;
    while (next() != nullptr) ++count;
    return count;
}

void oneLayerOfReference(benchmark::State& state) {
    const LargeReference reference;
    MOR_XRef space;
    space.CMORCadSpace::connect(L"PLAN");
    walkLayer(space);  // reads the layers
    for ([[maybe_unused]] auto step : state)
        if (walkLayer(space) != kLines / kLayers) return state.SkipWithError("not found");
}

class LargeDrawing {
public:
    LargeDrawing() : m_drawing(kLines, kLayers) {
        attachModule();
        m_document = host::openDocument(m_drawing.path()).value();
        host::setCurrentDocument(m_document);
    }
    ~LargeDrawing() {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
        host::closeDocument(m_document);
        detachModule();
    }
    LargeDrawing(const LargeDrawing&) = delete;
    LargeDrawing& operator=(const LargeDrawing&) = delete;
    [[nodiscard]] AcApDocument* document() const { return m_document; }

private:
    GeneratedDrawing m_drawing;
    AcApDocument* m_document = nullptr;
};

void oneLayerOfModelSpace(benchmark::State& state) {
    const LargeDrawing drawing;
    CMORCadSpace space;
    space.connect();
    for ([[maybe_unused]] auto step : state)
        if (walkLayer(space) != kLines / kLayers) return state.SkipWithError("not found");
}

/// All groups of all entities, for comparison.
void everythingDecoded(benchmark::State& state) {
    const LargeDrawing drawing;
    for ([[maybe_unused]] auto step : state) {
        std::size_t groups = 0;
        host::forEachRecord(drawing.document(), [&](const host::RecordInfo& record) {
            if (record.type == "LINE")
                groups += host::recordGroups(drawing.document(), record.name).size();
        });
        benchmark::DoNotOptimize(groups);
    }
}

BENCHMARK(loadReference)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(firstHandle)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(laterHandle);
BENCHMARK(oneLayerOfReference)->Unit(benchmark::kMillisecond);
BENCHMARK(oneLayerOfModelSpace)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(everythingDecoded)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace mor::bench
