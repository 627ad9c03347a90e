// What does a wildcard pattern cost per name, the worst ones included?

#include "platform/output_calls.h"

#include <benchmark/benchmark.h>

#include <string>

namespace mor::bench {
namespace {

void matchPattern(benchmark::State& state, const wchar_t* pattern) {
    const std::wstring name = L"A-WALL-EXTERIOR-INSULATED-0042";
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(acutWcMatch(name.c_str(), pattern));
}

void matchManyStars(benchmark::State& state) {
    const std::wstring name(static_cast<std::size_t>(state.range(0)), L'a');
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(acutWcMatch(name.c_str(), L"*a*a*a*a*a*a*a*a*b"));
    state.SetComplexityN(state.range(0));
}

BENCHMARK_CAPTURE(matchPattern, literal, L"A-WALL-EXTERIOR-INSULATED-0042");
BENCHMARK_CAPTURE(matchPattern, prefix, L"A-WALL*");
BENCHMARK_CAPTURE(matchPattern, classes, L"@-[U-Z]*-####");
BENCHMARK_CAPTURE(matchPattern, alternatives, L"B-*,C-*,D-*,~*WALL*,A-WALL*");
BENCHMARK(matchManyStars)->RangeMultiplier(4)->Range(16, 256)->Complexity();

}  // namespace
}  // namespace mor::bench
