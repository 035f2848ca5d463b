// What the program measures, by group.
#pragma once

namespace plenar_bench {

void AddConversionBenchmarks();   // copies, reorder, split, pack, packed10, float
void AddAlphaBenchmarks();        // alpha_encode, alpha_decode
void AddThreadBenchmarks();       // threads, small, pauses
void AddGrowthBenchmarks();       // growth
void AddKernelBenchmarks();       // kernels
void AddAdversarialBenchmarks();  // hostile

}  // namespace plenar_bench
