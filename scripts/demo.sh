#!/usr/bin/env bash
# Takes a real picture through the library and back: installs what is missing, builds the plenar program, encodes the
# picture with a plain and, where it has alpha of 8 or 16 bits, with a coded alpha plane, shows what the payloads hold,
# decodes them and proves that every sample came back.
#
#   scripts/demo.sh [PICTURE]     default: examples/pictures/sample.png
set -euo pipefail
case ${1:-} in
    -h | --help) sed -n '2,/^set/{s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}"; exit ;;
esac
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
picture=${1:-$root/examples/pictures/sample.png}
[[ -f $picture && -r $picture ]] || { echo "demo.sh: can't read the picture $picture; see demo.sh --help" >&2; exit 2; }
picture=$(realpath "$picture")
cd "$root"

echo "== Building the plenar program"
scripts/install_deps.sh build
mkdir -p build
{ cmake --preset release -B build/demo -DPLENAR_BUILD_TESTS=OFF && cmake --build build/demo --target plenar_tool; } \
    >build/demo.log 2>&1 || { cat build/demo.log >&2; echo "demo.sh: the build failed" >&2; exit 1; }
plenar=$root/build/demo/tools/plenar

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The decoded picture goes to a file format that holds any samples without loss.
case ${picture,,} in
    *.png) suffix=png ;;
    *.exr | *.hdr | *.pfm) suffix=exr ;;
    *.dpx) suffix=dpx ;;
    *.jpg | *.jpeg) suffix=png ;;
    *) suffix=tif ;;
esac

# Runs a command and leaves its wall time, in milliseconds, in $elapsed.
timed() {
    local start=$EPOCHREALTIME
    "$@"
    elapsed=$(((${EPOCHREALTIME/[.,]/} - ${start/[.,]/}) / 1000))
}

# A hash over the samples as the file stores them; made by OpenImageIO's own program.
sample_hash() {
    oiiotool --no-autopremult --native --hash "$1" | sed -n 's/^ *SHA-1: *//p'
}

channels() {
    oiiotool --info "$1" | sed -nE 's/.*, ([0-9]+) channel.*/\1/p'
}

# What has to come back: the samples of the picture, without alpha where the sample type keeps none.
expect() {
    local decoded=$1
    compared=$picture
    if (($(channels "$picture") == 4 && $(channels "$decoded") == 3)); then
        compared=colour.$suffix
        oiiotool --no-autopremult --native "$picture" --ch R,G,B -o "$compared"
        echo "note      alpha is kept at 8 and 16 bits only; the colours are compared"
    fi
    expected=$(sample_hash "$compared")
    [[ -n $expected ]] || { echo "demo.sh: no samples read from $picture" >&2; exit 1; }
}

round_trip() {
    local payload=$1.plenar decoded=$1.$suffix
    shift
    timed "$plenar" encode "$picture" "$payload" "$@"
    local encode_ms=$elapsed
    timed "$plenar" decode "$payload" "$decoded"
    local decode_ms=$elapsed
    echo
    echo "== Encoded${*:+ with $*}: plenar info"
    "$plenar" info "$payload"
    echo
    echo "payload   $(stat -c %s "$payload") bytes"
    echo "times     encode $encode_ms ms, decode $decode_ms ms: whole programs, picture files included"
    expect "$decoded"
    local hash
    hash=$(sample_hash "$decoded")
    echo "samples   SHA-1 $expected in the picture"
    echo "                $hash after encode and decode"
    if [[ $hash != "$expected" ]]; then
        echo "demo.sh: the samples differ" >&2
        exit 1
    fi
    echo "                equal: every sample came back"
}

echo
echo "== $(basename "$picture")"
echo "picture   $(oiiotool --info "$picture" | sed 's/^.* : *//')"
echo "file      $(stat -c %s "$picture") bytes"

round_trip plain
if "$plenar" info plain.plenar | grep -E '" a(08|16)"' >/dev/null; then
    round_trip coded --alpha-rle
else
    echo
    echo "No alpha plane of 8 or 16 bits in this picture: nothing to code."
fi
