#!/usr/bin/env bash
# Builds the benchmarks, runs them in several rounds, and prints one table of ratios; docs/performance.md explains it.
#
#   scripts/bench.sh [--quick] [--rounds N] [--filter REGEX] [--shift BYTES] [--cache BYTES] [--details]
#
#   --quick          3 rounds of short measurements: for a first look, not for a verdict
#   --rounds N       so many rounds; default 5
#   --filter REGEX   only benchmarks whose names match, as in ^copies/HD
#   --shift BYTES    moves the payload buffer within its page; default 0, as large allocations lie
#   --cache BYTES    has the last cache taken for so large: with 0 all frames are written past it
#   --details        all cases before the table
#
# Results: build/bench/rounds/*.json (as measured) and build/bench/results.json (medians and ratios).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

rounds=
quick=0
seconds=0.02
filter=.
details=()
while (($# > 0)); do
    case $1 in
        --quick) quick=1 seconds=0.005 ;;
        --rounds) rounds=${2:?--rounds needs a number}; shift ;;
        --filter) filter=${2:?--filter needs a regular expression}; shift ;;
        --shift) export PLENAR_BENCH_PAYLOAD_SHIFT=${2:?--shift needs a number of bytes}; shift ;;
        --cache) export PLENAR_BENCH_CACHE_BYTES=${2:?--cache needs a number of bytes}; shift ;;
        --details) details=(--details) ;;
        *) sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
    esac
    shift
done
rounds=${rounds:-$((quick ? 3 : 5))}

build=build/bench
mkdir -p "$build"
scripts/install_deps.sh build bench
{ cmake --preset release -B "$build" -DPLENAR_BUILD_BENCH=ON -DPLENAR_BUILD_TOOLS=OFF -DPLENAR_BUILD_TESTS=OFF &&
    cmake --build "$build" --target plenar_bench; } >"$build/build.log" 2>&1 ||
    { tail -n 60 "$build/build.log" >&2; echo "bench.sh: the build failed" >&2; exit 1; }
grep -E 'Benchmarks (compare|leave)' "$build/build.log" | sed 's/^-- //' || true

rm -rf "$build/rounds"
mkdir -p "$build/rounds"
for ((round = 1; round <= rounds; ++round)); do
    start=$SECONDS
    "$build/bench/plenar_bench" --benchmark_filter="$filter" --benchmark_min_time="$seconds" \
        --benchmark_out="$build/rounds/$round.json" --benchmark_out_format=json >"$build/run.log" 2>&1 ||
        { tail -n 20 "$build/run.log" >&2; echo "bench.sh: round $round failed" >&2; exit 1; }
    [[ -s $build/rounds/$round.json ]] || { echo "bench.sh: no benchmark matches $filter" >&2; exit 1; }
    echo "round $round of $rounds: $((SECONDS - start)) s"
done
echo
python3 scripts/bench_table.py "${details[@]}" --json "$build/results.json" "$build"/rounds/*.json
