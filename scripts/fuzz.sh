#!/usr/bin/env bash
# Builds the fuzz targets twice and runs both: with the address and undefined sanitizers, and without any, many times as
# fast. A finding ends the script with a failure, and its input is kept in build/fuzz-work/findings/.
#
#   scripts/fuzz.sh MINUTES [TARGET...]   each target for so long, half of it each build, on all processors; keeps what
#                                         it learns under build/
#   scripts/fuzz.sh --fast MINUTES [...]  without the sanitizers alone
#   scripts/fuzz.sh --smoke               a bit more than a minute in all, always the same start, from the committed
#                                         inputs alone
#
# Executions and their rates are told as rows of a table, which build/fuzz-work/rates.md keeps.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

usage() {
    sed -n '2,/^set /s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

(($# > 0)) || usage
work=build/fuzz-work
builds=(fuzz fuzz-fast)
if [[ $1 == --fast ]]; then
    builds=(fuzz-fast)
    shift
    (($# > 0)) || usage
fi
case $1 in
    --smoke)
        seconds=6 jobs=1 options=(-seed=1) keep=$(mktemp -d)
        trap 'rm -rf "$keep"' EXIT
        ;;
    *[!0-9]* | '') usage ;;
    *) seconds=$(($1 * 60 / ${#builds[@]})) jobs=$(nproc) options=() keep=$work ;;
esac
shift
targets=("$@")
((${#targets[@]} > 0)) || targets=(coded_planes decode metadata round_trip sequence twins)

for build in "${builds[@]}"; do
    cmake --preset "$build" >/dev/null
    cmake --build --preset "$build"
done
mkdir -p "$work/findings" "$work/logs"

# Hangs and large allocations are findings too: no target asks the library for more than a small picture. Inputs that
# take long come up seldom. The fast build doesn't follow how often each place is reached, which takes a third of its time.
options+=(-max_len=4096 -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=64 -print_final_stats=1)
declare -A following=([fuzz]=-entropic_scale_per_exec_time=1 [fuzz-fast]="-entropic=0 -use_counters=0")
# A finding that is run again without these tells where its memory was allocated.
export ASAN_OPTIONS=malloc_context_size=0:quarantine_size_mb=8:thread_local_quarantine_size_kb=64${ASAN_OPTIONS:+:$ASAN_OPTIONS}
TIMEFORMAT='cpu_seconds: %U %S'

# fuzz BUILD TARGET: on all processors, each with a process of its own.
fuzz() {
    local build=$1 target=$2 learnt=$keep/$2 job pids=() logs=() failed=0
    mkdir -p "$learnt"
    local inputs=("fuzz/corpus/$target") words
    read -ra words <<<"${following[$build]}"
    [[ $target != decode && $target != metadata ]] || words+=(-dict=fuzz/payload.dict)
    [[ ! -d fuzz/regressions/$target ]] || inputs+=("fuzz/regressions/$target")
    for ((job = 0; job < jobs; job++)); do
        logs+=("$work/logs/$build-$target-$job.log")
        { time "build/$build/fuzz/fuzz_$target" "${options[@]}" "${words[@]}" -max_total_time="$seconds" -reload=1 \
            -artifact_prefix="$work/findings/$target-" "$learnt" "${inputs[@]}"; } >"${logs[job]}" 2>&1 &
        pids+=($!)
    done
    for job in "${pids[@]}"; do
        wait "$job" || failed=1
    done
    if ((failed)); then
        grep -hE 'not so|ERROR|SUMMARY|runtime error|Test unit written' "${logs[@]}" >&2 || true
        exit 1
    fi
    awk -v row="| $(date -u +%F) | $target | $build |" '/number_of_executed_units/ { n += $2 }
        /library_calls/ { calls += $2 } /cpu_seconds/ { cpu += $2 + $3 }
        END { printf "%s %d | %d |%s\n", row, n, n / cpu, calls ? sprintf(" %d calls |", calls / cpu) : " |" }' \
        "${logs[@]}" | tee -a "$work/rates.md"
}

printf '| Date | Target | Build | Executions | A CPU second | |\n|---|---|---|---|---|---|\n' | tee -a "$work/rates.md"
for build in "${builds[@]}"; do
    for target in "${targets[@]}"; do
        fuzz "$build" "$target"
    done
done
