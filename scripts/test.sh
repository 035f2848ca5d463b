#!/usr/bin/env bash
# Installs what is missing, builds everything, runs all tests.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install_deps.sh build test
cmake --preset release
cmake --build --preset release
ctest --preset release --parallel "$(nproc)"
