#!/usr/bin/env bash
# Builds with coverage counters, runs all tests, the replay of the fuzz corpora among them, and reports how much of the
# library they reached: lines and branches of each file, and every line that nothing ran.
#
#   scripts/coverage.sh [--at-least PERCENT]
#
#   --at-least PERCENT   fail if less of all lines was reached
#
# A line of a template, or of a header that is compiled for several instruction sets, counts as reached if any of its
# instances was. Functions that the compiler made no code of, since it ran them itself to fill constant tables, don't
# count and are listed apart: a function that nothing uses shows there too. Results: build/coverage/report.txt (as printed), build/coverage/coverage.profdata.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

at_least=0
while (($# > 0)); do
    case $1 in
        --at-least) at_least=${2:?--at-least needs a number}; shift ;;
        *) sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
    esac
    shift
done

build=build/coverage
mkdir -p "$build"
scripts/install_deps.sh build test coverage

# Optimised, as the tests take long otherwise: the counters are placed before the optimiser runs. They are atomic, since
# workers share them.
flags="-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic"
{ cmake --preset clang -B "$build" -DPLENAR_BUILD_TOOLS=OFF -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" &&
    cmake --build "$build"; } >"$build/build.log" 2>&1 ||
    { tail -n 60 "$build/build.log" >&2; echo "coverage.sh: the build failed" >&2; exit 1; }

# One file for each instrumented program, which its processes add to.
profiles=$PWD/$build/profiles
rm -rf "$profiles"
LLVM_PROFILE_FILE="$profiles/%4m.profraw" ctest --test-dir "$build" --parallel "$(nproc)" --output-on-failure \
    >"$build/test.log" 2>&1 ||
    { tail -n 60 "$build/test.log" >&2; echo "coverage.sh: a test failed" >&2; exit 1; }
grep -E '^[0-9]+% tests passed' "$build/test.log"

llvm-profdata-14 merge "$profiles"/*.profraw -o "$build/coverage.profdata"

# The shared library, and the programs that hold its sources themselves.
objects=()
while IFS= read -r file; do
    objects+=(-object "$file")
done < <(find "$build" -name CMakeFiles -prune -o -type f -executable ! -name '*.sh' -print |
    while IFS= read -r file; do
        readelf -SW "$file" 2>/dev/null | grep -q __llvm_covmap && echo "$file"
    done)
llvm-cov-14 export -instr-profile "$build/coverage.profdata" "${objects[@]}" >"$build/coverage.json"
llvm-cov-14 export -format=lcov -instr-profile "$build/coverage.profdata" "${objects[@]}" >"$build/coverage.lcov"
llvm-profdata-14 show --all-functions "$build/coverage.profdata" >"$build/functions.txt"
python3 scripts/coverage_report.py --at-least "$at_least" "$build"/{coverage.json,coverage.lcov,functions.txt} |
    tee "$build/report.txt"
