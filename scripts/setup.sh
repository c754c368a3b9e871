#!/usr/bin/env bash
# Installs what is missing on Debian 12.
#
# Usage: scripts/setup.sh GROUP...
#   armhf   what builds and emulates programs for 32-bit ARM
#   asan    the compiler with the sanitizers and the fuzzer
#   build   compiler, build tools and the libraries of the programs and their tests
#   ci      what saves compiling the same file twice
#   demo    what draws pictures, and their font
#   lint    what checks format and code
#   package what makes and checks the Debian packages
#   sandbox no package: makes sure that vx-sandbox, and the tests that run it, can use /dev/fuse
set -euo pipefail

packagesOf() {
    case $1 in
        armhf) echo g++-arm-linux-gnueabihf mmdebstrap qemu-user ;;
        asan) echo clang libclang-rt-dev ;;
        build) echo g++ cmake ninja-build pkg-config qtbase5-dev liblog4cxx-dev libfuse3-dev \
            libgtest-dev libgmock-dev libbenchmark-dev \
            libcli11-dev libfmt-dev nlohmann-json3-dev libtomlplusplus-dev libpugixml-dev libkissfft-dev ;;
        ci) echo ccache ;;
        demo) echo gnuplot-nox fonts-dejavu-core ;;
        lint) echo clang-format clang-tidy cppcheck ;;
        package) echo dpkg-dev lintian man-db mmdebstrap systemd ;;
        sandbox) ;;
        *) fail "unknown group '$1': expected armhf, asan, build, ci, demo, lint, package or sandbox" ;;
    esac
}

fail() {
    echo "setup: $*" >&2
    exit 1
}

isInstalled() {
    [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# asRoot PURPOSE COMMAND...: runs the command, through sudo where that is needed.
asRoot() {
    local purpose=$1
    shift
    echo "setup: $purpose: $*"
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "this needs root, and there is no sudo; as root, run: $*"
    fi
}

installMissing() {
    local missing=() package
    for package in "$@"; do
        isInstalled "$package" || missing+=("$package")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0

    asRoot "reading the list of packages" apt-get -q update
    asRoot "installing what is missing" env DEBIAN_FRONTEND=noninteractive \
        apt-get -q install -y --no-install-recommends "${missing[@]}"
}

# The simulated driver serves its files through /dev/fuse.
prepareFuse() {
    if [[ ! -e /dev/fuse ]]; then
        asRoot "loading the module that makes /dev/fuse" modprobe fuse || true
        [[ -e /dev/fuse ]] || fail "/dev/fuse is missing; vx-sandbox and the tests that run it need it." \
            "In a container: start it with --device /dev/fuse"
    fi
    if [[ ! -r /dev/fuse || ! -w /dev/fuse ]]; then
        asRoot "opening /dev/fuse to all users, as Debian does" chmod 0666 /dev/fuse
    fi
}

command -v dpkg-query >/dev/null || fail "this is made for Debian 12, and there is no dpkg-query"
packages=()
for group in "$@"; do
    list=$(packagesOf "$group")
    read -ra names <<<"$list"
    packages+=("${names[@]}")
done
installMissing "${packages[@]}"
if [[ " $* " == *" sandbox "* ]]; then
    prepareFuse
fi
