#!/usr/bin/env bash
# Makes the recordings of the folder recordings, as a relay with 1000 samples a second would have
# them: COMTRADE of 1999 with ASCII data, from the states in this folder.
#
# Usage: make-recordings.sh VX_CASE DIRECTORY
#   VX_CASE     the program vx-case
#   DIRECTORY   where the files go; it is made when it is missing
set -euo pipefail

if [[ $# -ne 2 ]]; then
    echo "Usage: make-recordings.sh VX_CASE DIRECTORY" >&2
    exit 2
fi
case=$1
directory=$2
states=$(dirname "$0")
mkdir -p "$directory"

# make NAME SAMPLES TRIGGER: every 18th line of a value file, at 50 Hz, is a sample of 1 ms. Values are
# in units of 10 mV and 10 mA, since COMTRADE of 1999 has five digits.
make() {
    local channel names=(UA UB UC UN IA IB IC IN) phases=(A B C N A B C N)
    {
        printf '%s\r\n' "Example,$1,1999" "8,8A,0D"
        for channel in {0..7}; do
            printf '%d,%s,%s,,%s,0.01,0,0,-99999,99999,1,1,S\r\n' $((channel + 1)) \
                "${names[channel]}" "${phases[channel]}" "$( ((channel < 4)) && echo V || echo A)"
        done
        printf '%s\r\n' 50 1 "1000,$2" 02/03/2026,04:05:06.000000 "02/03/2026,04:05:06.$3" ASCII 1
    } >"$directory/$1.cfg"
    "$case" generate --states "$states/$1.toml" 2>/dev/null | awk -F';' -v samples="$2" '
        !/^#/ && line++ % 18 == 0 && sample < samples {
            printf "%d,%d", ++sample, (sample - 1) * 1000
            for (i = 6; i <= 13; ++i) printf ",%.0f", $i / 10
            printf "\r\n"
        }' >"$directory/$1.dat"
}

make ct-saturation 600 200000
make evolving-fault 600 500000
make inrush 600 200000
