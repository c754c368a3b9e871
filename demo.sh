#!/usr/bin/env bash
# Installs what is missing, builds, and lets the simulator play the examples into a simulated
# driver: a steady signal; after 3 s, on command, a voltage sag once; after 6 s a distorted signal.
#
# Usage: ./demo.sh [--for SECONDS]     (default and minimum: 10)
set -euo pipefail
cd "$(dirname "$0")"
export LC_ALL=C.UTF-8

usage() {
    echo "demo: $1" >&2
    echo "Usage: ./demo.sh [--for SECONDS]     (whole seconds, 10 or more; default 10)" >&2
    exit 2
}

seconds=10
if [[ $# -gt 0 ]]; then
    [[ $1 == --for && $# -eq 2 ]] || usage "'$*': expected nothing or --for SECONDS"
    [[ $2 =~ ^[1-9][0-9]{1,5}$ ]] || usage "--for '$2': expected whole seconds, 10 to 999999"
    seconds=$2
fi

results=build/demo
programs=$PWD/build/release

scripts/setup.sh build demo sandbox
cmake --preset release
cmake --build --preset release --target vx-simulator vx-control vx-sandbox vx-case
rm -rf "$results"
examples/make-cases.sh "$programs/tools/case/vx-case" "$results"

echo
echo "demo: playing for $seconds s; the commands s1 and 2 follow after 3 s and 6 s"
examples=$PWD/examples
(
    cd "$results" # the value files are named relative to where the simulator starts
    "$programs/tools/sandbox/vx-sandbox" --record recording.bin --events events.jsonl \
        --for "$seconds" --send 3:s1 --send 6:2 -- \
        "$programs/source/vx-simulator" --track "$examples/demo.trackconfig.xml" \
        --config "$examples/vx-simulator.conf"
)
[[ -s $results/recording.bin ]] || { echo "demo: nothing arrived at the driver" >&2; exit 1; }
"$programs/tools/case/vx-case" plot "$results/recording.bin" --events "$results/events.jsonl" \
    --config examples/vx-simulator.conf --directory "$results" -o "$results/waveform.svg"

echo
echo "demo: what it left"
printf '  %s\n' \
    "$results/waveform.svg    the picture: the whole run and each switch" \
    "$results/recording.bin   the samples as they arrived, 48 bytes each" \
    "$results/events.jsonl    every write to the driver and every command, with its time" \
    "$results/simulator.log   the simulator's log"
