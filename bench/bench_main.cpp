// Measures the library, and what it is compared with, under names of five parts:
//
//   group/size/threads/case/what
//
// Run it through scripts/bench.sh, which repeats it and makes the table of ratios.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "benchmarks.h"
#include "measurement.h"
#include "simd/target.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    // What a last cache is expected to keep decides what is written past it.
    if (const char* cache = std::getenv("PLENAR_BENCH_CACHE_BYTES"); cache != nullptr) {
        plenar::ForceLastLevelCacheBytes(std::stoull(cache));
    }
    benchmark::AddCustomContext("cache_bytes", std::to_string(plenar::LastLevelCacheBytes()));
    benchmark::AddCustomContext("payload_shift", std::to_string(plenar_bench::PayloadShift()));
    plenar_bench::AddConversionBenchmarks();
    plenar_bench::AddAlphaBenchmarks();
    plenar_bench::AddThreadBenchmarks();
    plenar_bench::AddGrowthBenchmarks();
    plenar_bench::AddKernelBenchmarks();
    plenar_bench::AddAdversarialBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
