// What does a wildcard pattern cost per name, the worst ones included, and against the C library's?

#include "platform/output_calls.h"

#include <benchmark/benchmark.h>

#include <fnmatch.h>
#include <string>

namespace mor::bench {
namespace {

void matchPattern(benchmark::State& state, const wchar_t* pattern) {
    const std::wstring name = L"A-WALL-EXTERIOR-INSULATED-0042";
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(acutWcMatch(name.c_str(), pattern));
}

/// The C library's matcher on the same name, with a pattern of its own that says the same.
void matchWithFnmatch(benchmark::State& state, const char* pattern) {
    const std::string name = "A-WALL-EXTERIOR-INSULATED-0042";
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(::fnmatch(pattern, name.c_str(), 0));
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
BENCHMARK_CAPTURE(matchPattern, suffix, L"*-0042");
BENCHMARK_CAPTURE(matchPattern, inside, L"*EXTERIOR*");
BENCHMARK_CAPTURE(matchPattern, sets, L"[A-F]-[U-Z]*-00[0-9][0-9]");
BENCHMARK_CAPTURE(matchWithFnmatch, literal, "A-WALL-EXTERIOR-INSULATED-0042");
BENCHMARK_CAPTURE(matchWithFnmatch, prefix, "A-WALL*");
BENCHMARK_CAPTURE(matchWithFnmatch, classes,
                  "[[:alpha:]]-[U-Z]*-[[:digit:]][[:digit:]][[:digit:]][[:digit:]]");
BENCHMARK_CAPTURE(matchWithFnmatch, suffix, "*-0042");
BENCHMARK_CAPTURE(matchWithFnmatch, inside, "*EXTERIOR*");
BENCHMARK_CAPTURE(matchWithFnmatch, sets, "[A-F]-[U-Z]*-00[0-9][0-9]");
BENCHMARK_CAPTURE(matchPattern, alternatives, L"B-*,C-*,D-*,~*WALL*,A-WALL*");
BENCHMARK(matchManyStars)->RangeMultiplier(4)->Range(16, 256)->Complexity();

}  // namespace
}  // namespace mor::bench
