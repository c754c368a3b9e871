#!/usr/bin/env bash
# Installs what is missing and makes the Debian packages in build/package. Two builds of one commit
# are alike, byte by byte: every time in them is that of the commit, or SOURCE_DATE_EPOCH.
#
# Usage: scripts/make-packages.sh
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

if [[ -z ${SOURCE_DATE_EPOCH:-} ]]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) || {
        echo "make-packages: no commit to take the time from; set SOURCE_DATE_EPOCH" >&2
        exit 1
    }
fi
export SOURCE_DATE_EPOCH
scripts/setup.sh build package
rm -f build/package/*.deb build/package/*.ddeb
# The time of the build is compiled into this one; nothing else tells that it has changed.
rm -f build/package/source/CMakeFiles/vx-simulator.dir/main.cpp.o
cmake --preset package
cmake --build --preset package
(cd build/package && cpack)
