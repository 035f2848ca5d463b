// What all benchmarks here have in common: a piece of work, measured under a name that scripts/bench_table.py reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace plenar_bench {

// Something to repeat. `run` says whether it succeeded: a failure ends the benchmark with an error.
struct Work {
    std::function<bool()> run;
    size_t bytes = 0;                           // that one run stands for, read plus written
    std::map<std::string, double> counts = {};  // of one run, reported as they are: pixels, tokens
};

// Work of one thread is measured by that thread's processor time: what else the machine does counts less.
enum class Clock { Processor, Wall };

// Registers a benchmark by the name "group/size/threads/case/what". Measurements that differ in `what` alone are
// compared with one another, and run one right after the other. `prepare` makes the work before each measurement.
void Measure(const std::string& name, std::function<Work()> prepare, Clock clock = Clock::Processor);

// As Measure by the wall clock, but what stands between two runs of the work is not timed.
void MeasureAfter(const std::string& name, std::function<Work()> prepare, std::function<void()> between);

// Memory that one measurement after the other uses, as a caller uses the same buffers for frame after frame. Contents
// are what the last user left; at least `size` bytes.
//
// Both begin with a page: large buffers of most allocators share their offset in the page likewise. Stores and the
// loads that follow them then share the low bits of their addresses, which costs processors time; PayloadShift moves
// the payload to see how much.
uint8_t* PictureMemory(size_t size);
uint8_t* PayloadMemory(size_t size);

// Bytes from the beginning of a page to the payload; the environment variable PLENAR_BENCH_PAYLOAD_SHIFT, or 0.
size_t PayloadShift();

}  // namespace plenar_bench
