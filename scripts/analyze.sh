#!/usr/bin/env bash
# Runs GCC's static analyser over the library. Nothing printed means nothing found.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install_deps.sh build

# GCC 12's analyser was made for C. These four of its warnings are off, as all they find here is what it doesn't know:
#   use-of-uninitialized-value    records that a function of another source returns by value
#   possible-null-dereference,
#   possible-null-argument        operator new, which throws
#   shift-count-overflow          shifts of vectors: it takes their number of lanes for their width
flags=(-fanalyzer
    -Wno-analyzer-use-of-uninitialized-value
    -Wno-analyzer-possible-null-dereference
    -Wno-analyzer-possible-null-argument
    -Wno-analyzer-shift-count-overflow)

# Little optimised: enough to see through small functions, and quick.
build=build/analyze
mkdir -p build
{ cmake --preset release -B "$build" -DCMAKE_CXX_COMPILER=g++ -DPLENAR_BUILD_TOOLS=OFF -DPLENAR_BUILD_TESTS=OFF \
    -DCMAKE_CXX_FLAGS="${flags[*]}" -DCMAKE_CXX_FLAGS_RELEASE="-O1" &&
    cmake --build "$build" --target plenar_core --clean-first -- -k 0; } >build/analyze.log 2>&1 ||
    { cat build/analyze.log >&2; echo "analyze.sh: findings" >&2; exit 1; }
