#!/usr/bin/env bash
# Includes inside the library run one way: a module includes itself and the modules of the steps below it. See
# docs/architecture.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../plenar/src"

# From the top down; modules on one line don't know one another.
steps=("api" "frame" "container conversion rle" "format simd pool" "base")

for module in */; do
    [[ " ${steps[*]} " == *" ${module%/} "* ]] || { echo "check_includes.sh: unknown module ${module%/}"; exit 1; }
done

failed=0
for ((step = 0; step < ${#steps[@]}; ++step)); do
    below=$(tr ' ' '|' <<<"${steps[*]:step + 1}")
    for module in ${steps[step]}; do
        found=$(grep -rHn '^#include "' "$module" |
            grep -vE "#include \"(plenar_sdk\.h|processor_(targets|vector)\.h|($module${below:+|$below})/.*)\"" || true)
        if [[ -n $found ]]; then
            printf 'not for %s:\n%s\n' "$module" "$found"
            failed=1
        fi
    done
done
exit "$failed"
