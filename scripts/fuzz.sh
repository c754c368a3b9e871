#!/usr/bin/env bash
# Builds the fuzzers and runs each of them for some time from its corpus. A finding ends the run
# with the input in build/fuzz/findings/.
#
# Usage: scripts/fuzz.sh [SECONDS]     (for each fuzzer; default 30)
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-30}
scripts/setup.sh build asan
cmake --preset asan
names=(values cases commands comtrade single texts states plans maps limits tables)
cmake --build --preset asan --target "${names[@]/#/vx-fuzz-}"
mkdir -p build/fuzz/findings
for name in "${names[@]}"; do
    # What it learns stays in the build directory; the corpus in the repository is only read.
    mkdir -p "build/fuzz/learnt/$name"
    echo "fuzz: $name for $seconds s"
    "build/asan/fuzz/vx-fuzz-$name" -max_total_time="$seconds" -print_final_stats=1 -verbosity=0 \
        -timeout=10 -dict="fuzz/$name.dict" -artifact_prefix="build/fuzz/findings/$name-" \
        "build/fuzz/learnt/$name" "fuzz/corpus/$name"
done
