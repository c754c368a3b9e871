#!/usr/bin/env bash
# Makes a Debian armhf system root to cross-build and to emulate in: headers and libraries only.
# Takes the archive and the release from the machine's own package sources; does nothing when this
# script has already made it.
#
# Usage: scripts/make-sysroot.sh [DIRECTORY]     (default: build/sysroot-armhf)
# Requires: Debian, mmdebstrap, and either root or user namespaces with the package uidmap.
set -euo pipefail
cd "$(dirname "$0")/.."

directory=$(realpath -m "${1:-build/sysroot-armhf}")
packages=libc6-dev,qtbase5-dev,liblog4cxx-dev,libfuse3-dev,libgtest-dev,libgmock-dev,libbenchmark-dev
packages+=,libcli11-dev,libfmt-dev,nlohmann-json3-dev,libtomlplusplus-dev,libpugixml-dev,libkissfft-dev

fail() {
    echo "make-sysroot: $*" >&2
    exit 1
}

command -v mmdebstrap >/dev/null || fail "mmdebstrap is missing: apt-get install mmdebstrap"
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)

sources=$(scripts/debian-sources.sh)

stamp="$release $(sha256sum <"scripts/make-sysroot.sh")"
if [[ $(cat "$directory/made-of" 2>/dev/null) == "$stamp" ]]; then
    echo "make-sysroot: $directory is up to date"
    exit 0
fi

mkdir -p "$(dirname "$directory")"
new=$(mktemp -d "$directory.XXXXXX")
trap 'rm -rf "$new"' EXIT
chmod 0755 "$new"

# Through tar, so that the files belong to the caller and no device nodes are needed. Nothing runs
# the one program, but Qt's CMake files insist on it.
echo "make-sysroot: unpacking into $directory"
mmdebstrap --quiet --architectures=armhf --variant=extract --include="$packages" "$release" - \
    - <<<"$sources" |
    tar -x -C "$new" --no-same-owner \
        ./lib ./usr/include ./usr/lib ./usr/share/cmake ./usr/bin/arm-linux-gnueabihf-qmake

# Links that begin at the root would lead to the host's files.
find "$new" -lname '/*' -print0 | while IFS= read -r -d '' link; do
    target=$new$(readlink "$link")
    ln -snf "$(realpath -m -s --relative-to="$(dirname "$link")" "$target")" "$link"
done

echo "$stamp" >"$new/made-of"
rm -rf "$directory"
mv "$new" "$directory"
trap - EXIT
