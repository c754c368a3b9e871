#!/usr/bin/env bash
# Plays the example night twice: as it is, where every case must pass; and with a block that the
# driver refuses, where the night must fail, and no other play than the one it hit.
#
# Usage: scripts/test-night.sh
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

scripts/setup.sh build demo sandbox
cmake --preset release
cmake --build --preset release --target vx-simulator vx-sandbox vx-campaign
built=$PWD/build/release
export PATH=$built/source:$built/tools/sandbox:$built/tools/campaign:$PATH
folder=build/night
rm -rf "$folder"
mkdir -p "$folder"

# night NAME STATUS OPTION...: plays the plan, and checks how that ended.
night() {
    local name=$1 expected=$2 status=0
    shift 2
    vx-campaign run examples/night.toml -o "$folder/$name" "$@" ||
        status=$?
    if [[ $status -ne $expected ]]; then
        echo "test-night: $name ended with status $status, expected $expected" >&2
        exit 1
    fi
    [[ -s $folder/$name/report.html && -s $folder/$name/junit.xml ]] ||
        { echo "test-night: $name left no report" >&2; exit 1; }
}

night good 0
night refused 1 --fault adc-in:300:EIO
failed=$(grep -c ',failed,' "$folder/refused/cases.csv" || true)
[[ $failed -eq 1 ]] || { echo "test-night: $failed plays failed, expected 1" >&2; exit 1; }
echo "test-night: passed"
