// Does opening a drawing keep up with a newline scan, and does its time grow with its size only?

#include "bench/generated_drawing.h"
#include "host/host.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <string>

namespace mor::bench {
namespace {

void openDrawing(benchmark::State& state) {
    const GeneratedDrawing drawing(static_cast<std::size_t>(state.range(0)));
    for ([[maybe_unused]] auto step : state) {
        auto opened = host::openDocument(drawing.path());
        if (!opened) return state.SkipWithError(opened.error().message().c_str());
        host::closeDocument(opened.value());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * drawing.bytes()));
    state.SetComplexityN(state.range(0));
}

void scanNewlines(benchmark::State& state) {
    const GeneratedDrawing drawing(static_cast<std::size_t>(state.range(0)));
    std::string piece(std::size_t{256} * 1024, '\0');
    for ([[maybe_unused]] auto step : state) {
        std::ifstream file(drawing.path(), std::ios::binary);
        std::ptrdiff_t lines = 0;
        while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) ||
               file.gcount() > 0)
            lines += std::count(piece.begin(), piece.begin() + file.gcount(), '\n');
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * drawing.bytes()));
}

BENCHMARK(openDrawing)->RangeMultiplier(4)->Range(1024, 262144)->Complexity();
BENCHMARK(scanNewlines)->RangeMultiplier(4)->Range(1024, 262144);

}  // namespace
}  // namespace mor::bench
