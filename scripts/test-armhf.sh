#!/usr/bin/env bash
# Installs what is missing, cross-builds everything for 32-bit ARM and runs the tests in emulation.
#
# Usage: scripts/test-armhf.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build armhf
scripts/make-sysroot.sh
# The sandbox in which the emulated program is tested is a native one.
cmake --preset release
cmake --build --preset release --target vx-sandbox
./test.sh armhf
