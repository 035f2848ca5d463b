#!/usr/bin/env bash
# Includes inside the library run one way: each room includes itself and the few headers named here. See
# docs/architecture.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../plenar/src"

failed=0

# check FILES... -- ALLOWED, a regular expression for what may stand between the quotes
check() {
    local files=() allowed
    while [[ $1 != -- ]]; do
        files+=("$1")
        shift
    done
    allowed=$2
    local found
    found=$(grep -Hn '^#include "' "${files[@]}" | grep -vE "#include \"($allowed)\"" || true)
    if [[ -n $found ]]; then
        printf 'not for this room:\n%s\n' "$found"
        failed=1
    fi
}

basics='plenar_sdk\.h|plenar/(params|exceptions|cpu_features)\.h'
check pool/* -- 'pool/.*'
check plenar/{params,codec_state,exceptions,cpu_features}.* -- "$basics|plenar/codec_state\.h|pool/.*"
check rle/* -- 'rle/.*|pool/.*|plenar/(exceptions|cpu_features)\.h'
check container/* -- "container/.*|$basics|rle/rle_params\.h"
check conversion/* -- "conversion/.*|$basics|plenar/codec_state\.h|pool/.*"
check plenar/* -- 'plenar_sdk\.h|(plenar|container|conversion|rle|pool)/.*'
exit "$failed"
