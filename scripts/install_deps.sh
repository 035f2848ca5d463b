#!/usr/bin/env bash
# Installs the Debian packages that are missing for the named groups; needs root or sudo only if there are any.
#
#   scripts/install_deps.sh GROUP...
#
#   build      the library and the plenar program
#   test       the tests
#   bench      the benchmarks, and the libraries that they compare with
#   coverage   a build that counts what the tests reach, and the report of it
#   ci         what the project's check needs besides: Clang, clang-format, clang-tidy
set -euo pipefail

build=(g++ cmake ninja-build libopenimageio-dev openimageio-tools libcli11-dev nlohmann-json3-dev nettle-dev zlib1g-dev)
test=(libgtest-dev libgmock-dev binutils pkgconf)
bench=(libbenchmark-dev libyuv-dev libswscale-dev libavutil-dev liblz4-dev libzstd-dev python3)
coverage=(clang-14 libclang-rt-14-dev llvm-14 python3)
ci=(clang-14 libclang-rt-14-dev clang-format-14 clang-tidy-14)

wanted=()
for group in "$@"; do
    case $group in
        build) wanted+=("${build[@]}") ;;
        test) wanted+=("${test[@]}") ;;
        bench) wanted+=("${bench[@]}") ;;
        coverage) wanted+=("${coverage[@]}") ;;
        ci) wanted+=("${ci[@]}") ;;
        *) echo "install_deps.sh: unknown group '$group' (build, test, bench, coverage, ci)" >&2; exit 2 ;;
    esac
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "install_deps.sh: not a Debian system; these Debian packages, or their like, have to be there: ${wanted[*]}" >&2
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
    exit 0
fi

as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "install_deps.sh: run as root, or install these packages: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Fetching and installing packages, which can take some minutes: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends "${missing[@]}"; } \
    >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "install_deps.sh: apt-get failed" >&2
    exit 1
fi
