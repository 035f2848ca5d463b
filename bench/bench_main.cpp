// Measures the library, and what it is compared with, under names of five parts:
//
//   group/size/threads/case/what
//
// Run it through scripts/bench.sh, which repeats it and makes the table of ratios.
#include <benchmark/benchmark.h>

#include <string>

#include "benchmarks.h"
#include "measurement.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
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
