#!/usr/bin/env bash
# Makes the value files that vx-simulator.conf names.
#
# Usage: make-cases.sh VX_CASE DIRECTORY
#   VX_CASE     the program vx-case
#   DIRECTORY   where the files go; it is made when it is missing
set -euo pipefail

if [[ $# -ne 2 ]]; then
    echo "Usage: make-cases.sh VX_CASE DIRECTORY" >&2
    exit 2
fi
case=$1
directory=$2
mkdir -p "$directory"

# 230 V, the currents lag by 30 degrees, 5 A but only 4.7 A in the third phase: so the neutral
# conductor carries the difference, and its 0.5 ohm make the neutral voltage.
load=(--amplitudes "325269,325269,325269,212,7071,7071,6647,424"
    --phases "0,-120,120,-90,-30,-150,90,-90")

"$case" generate "${load[@]}" --frequency 50 --duration 0.4 -o "$directory/steady-50hz.csv"

# A fault on the first phase, from a peak of its voltage on: the voltage falls, the current rises,
# both later in phase. The neutral follows from the sum of the three currents.
"$case" generate "${load[@]}" --frequency 50 --duration 1 \
    --disturbance 0.305:0.4:0.4:-30:0 \
    --disturbance 0.305:0.4:3:-30:4 \
    --disturbance 0.305:0.4:37.51:16.37:3,7 \
    -o "$directory/sag-50hz.csv"

# Two harmonics of the same size, which cancel each other where the file starts and ends.
"$case" generate "${load[@]}" --frequency 60 --duration 0.5 \
    --harmonic 5:0.05:0:0,1,2 --harmonic 7:0.05:0:0,1,2 \
    --harmonic 5:0.2:0:3,4,5,6,7 --harmonic 7:0.2:0:3,4,5,6,7 \
    -o "$directory/distorted-60hz.csv"
