#!/usr/bin/env bash
# Installs what is missing, cross-builds the programs of the device for 32-bit ARM and runs their
# tests in emulation.
#
# Usage: scripts/test-armhf.sh
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

scripts/setup.sh build sandbox armhf
scripts/make-sysroot.sh
# The tools with which the emulated program is tested are native ones.
cmake --preset release
cmake --build --preset release --target vx-sandbox vx-case
cmake --preset armhf
cmake --build --preset armhf
ctest --preset armhf
