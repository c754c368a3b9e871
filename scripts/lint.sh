#!/usr/bin/env bash
# Checks format and code of everything that is ours; every finding is an error.
#
# Usage: scripts/lint.sh [FOLDER...]
#   FOLDER   the code that clang-tidy reads; without any, all of it with the tests
set -euo pipefail
cd "$(dirname "$0")/.."

# As release: each file by itself, and all files of a target joined as one.
database=build/lint
joined=build/lint-joined
cmake --preset release -B "$database" -D CMAKE_UNITY_BUILD=OFF >/dev/null
cmake --preset release -B "$joined" -D CMAKE_UNITY_BUILD_BATCH_SIZE=0 >/dev/null
jobs=$(nproc)
programs=(source externals tools)
status=0

echo "lint: clang-format"
find "${programs[@]}" tests benchmarks fuzz \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 clang-format --dry-run -Werror || status=1

# Without the tests: their macros are beyond its parser.
echo "lint: cppcheck"
cppcheck --quiet -j "$jobs" --project="$database/compile_commands.json" -itests \
    --enable=warning,style,performance,portability --library=qt \
    --suppressions-list=scripts/cppcheck.suppressions --error-exitcode=1 || status=1

echo "lint: each file by itself, and one definition for each name"
cmake --preset odr >/dev/null
cmake --build --preset odr -- --quiet -k 0 || status=1

# tidy DATABASE OPTION... FOLDER...: reads all files of the folders that the database knows, one by
# one or joined. How many warnings it suppressed in the headers of others is not printed.
tidy() {
    local in=$1 options=() folders
    shift
    while [[ $1 == -* ]]; do
        options+=("$1")
        shift
    done
    folders=$(IFS='|' && echo "$*")
    grep -o '"file": "[^"]*"' "$in/compile_commands.json" | cut -d '"' -f 4 |
        grep -E "^$PWD/($in/)?($folders)/" | sort -u | tr '\n' '\0' |
        xargs -0 -n 1 -P "$jobs" clang-tidy --quiet -p "$in" --config-file=.clang-tidy \
            --header-filter="/($folders)/.*\.(h|cpp)$" \
            --extra-arg=-Wno-unknown-warning-option --extra-arg=-U_FORTIFY_SOURCE "${options[@]}" 2>&1 |
        sed '/^[0-9]* warnings\{0,1\} generated\.$/d'
}

folders=("$@")
[[ $# -gt 0 ]] || folders=("${programs[@]}")

# Joined, because the headers of the libraries take most of the time: 40 s for 32 files, where four
# times 8 files take 140 s. (The compiler is faster with 8.) So each name in an unnamed namespace
# stands once in a target.
echo "lint: clang-tidy"
tidy "$joined" --checks=-clang-analyzer-*,-bugprone-suspicious-include "${folders[@]}" || status=1

# It analyzes functions of the file alone, so not those that were joined to it. That takes longer than
# all the rest: with folders it reads what runs on the device, without any everything.
analyzed=("${programs[@]}")
[[ $# -eq 0 ]] || analyzed=(source externals tools/control tools/configuration tools/files)
echo "lint: analyzer of clang-tidy: ${analyzed[*]}"
tidy "$database" --checks=-*,clang-analyzer-* "${analyzed[@]}" || status=1

if [[ $# -eq 0 ]]; then
    # Tests are not tuned, they join literals on purpose, and the analyzer takes minutes for them.
    echo "lint: clang-tidy of the tests"
    tidy "$joined" --checks=-clang-analyzer-*,-performance-*,-bugprone-suspicious-* \
        tests benchmarks || status=1
fi
exit "$status"
