#!/usr/bin/env bash
# Builds the fuzz targets with the address and undefined sanitizers and runs them. A finding ends the script with a
# failure, and its input is kept in build/fuzz-work/findings/.
#
#   scripts/fuzz.sh MINUTES [TARGET...]   each target for so long, on all processors; keeps what it learns under build/
#   scripts/fuzz.sh --smoke               about a minute in all, always the same start, from the committed inputs alone
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
    sed -n '2,/^set /s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

(($# > 0)) || usage
work=build/fuzz-work
case $1 in
    --smoke)
        seconds=8 jobs=1 options=(-seed=1) keep=$(mktemp -d)
        trap 'rm -rf "$keep"' EXIT
        ;;
    *[!0-9]* | '') usage ;;
    *) seconds=$(($1 * 60)) jobs=$(nproc) options=() keep=$work ;;
esac
shift
targets=("$@")
((${#targets[@]} > 0)) || targets=(coded_planes decode metadata round_trip sequence twins)

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

# Hangs and large allocations are findings too: no target asks the library for more than a small picture.
options+=(-max_len=4096 -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=64 -print_final_stats=1)

# fuzz TARGET SECONDS: one target on all processors, each with a process of its own.
fuzz() {
    local target=$1 learnt=$keep/$1 job pids=() failed=0
    mkdir -p "$learnt" "$work/findings" "$work/logs"
    local inputs=("fuzz/corpus/$target") words=()
    [[ $target != decode && $target != metadata ]] || words=(-dict=fuzz/payload.dict)
    [[ ! -d fuzz/regressions/$target ]] || inputs+=("fuzz/regressions/$target")
    for ((job = 0; job < jobs; job++)); do
        build/fuzz/fuzz/fuzz_"$target" "${options[@]}" "${words[@]}" -max_total_time="$2" -reload=1 \
            -artifact_prefix="$work/findings/$target-" "$learnt" "${inputs[@]}" >"$work/logs/$target-$job.log" 2>&1 &
        pids+=($!)
    done
    for job in "${!pids[@]}"; do
        wait "${pids[job]}" || failed=1
        awk -v name="$target" '/DONE/ { done = $0 } /number_of_executed_units/ { n = $2 }
            END { print name ": " n " executions; " done }' "$work/logs/$target-$job.log"
    done
    if ((failed)); then
        grep -hE 'not so|ERROR|SUMMARY|runtime error|Test unit written' "$work"/logs/"$target"-*.log >&2 || true
        exit 1
    fi
}

for target in "${targets[@]}"; do
    fuzz "$target" "$seconds"
done
