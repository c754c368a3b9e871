#!/usr/bin/env bash
# Makes the packages of build/package again, from a copy in another folder, in another time zone and
# without the compiler cache, and compares them byte by byte.
#
# Usage: scripts/test-reproducible.sh
# Requires: scripts/make-packages.sh has made build/package from the same files and commit.
set -euo pipefail
cd "$(dirname "$0")/.."

SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH
shopt -s nullglob
packages=(build/package/*.deb build/package/*.ddeb)
[[ ${#packages[@]} -eq 4 ]] || {
    echo "test-reproducible: expected four packages in build/package; make them first" >&2
    exit 1
}

copy=$(mktemp -d /tmp/vx-again.XXXXXX)
trap 'rm -rf "$copy"' EXIT
git ls-files -z | tar --null -T - -c | tar -x -C "$copy"
env -u CMAKE_CXX_COMPILER_LAUNCHER TZ=Asia/Tokyo "$copy/scripts/make-packages.sh"
status=0
for package in "${packages[@]}"; do
    cmp "$package" "$copy/$package" || status=1
done
[[ $status -eq 0 ]] || {
    echo "test-reproducible: two builds differ" >&2
    exit 1
}
sha256sum "${packages[@]}"
echo "test-reproducible: passed"
