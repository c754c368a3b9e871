#!/usr/bin/env bash
# Installs what is missing, builds and runs all tests.
#
# Usage: ./test.sh [PRESET]     (default: release; debug and asan are the others)
set -euo pipefail
cd "$(dirname "$0")"
export LC_ALL=C.UTF-8

preset=${1:-release}
groups=(build sandbox)
[[ $preset != asan ]] || groups+=(asan)
scripts/setup.sh "${groups[@]}"
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
