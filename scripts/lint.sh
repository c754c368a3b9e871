#!/usr/bin/env bash
# Checks format and code of everything that is ours; every finding is an error.
#
# Usage: scripts/lint.sh [FOLDER...]
#   FOLDER   the code that clang-tidy reads; without any, all of it with the tests
set -euo pipefail
cd "$(dirname "$0")/.."

# As release, but each file by itself.
database=build/lint
cmake --preset release -B "$database" -D CMAKE_UNITY_BUILD=OFF >/dev/null
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

echo "lint: clang-tidy"
tidy() {
    local checks=$1
    shift
    # How many warnings it suppressed in the headers of others says nothing.
    find "$@" -name '*.cpp' -print0 |
        xargs -0 -n 1 -P "$jobs" clang-tidy --quiet -p "$database" --checks="$checks" 2>&1 |
        sed '/^[0-9]* warnings\{0,1\} generated\.$/d'
}
if [[ $# -gt 0 ]]; then
    tidy "" "$@" || status=1
    exit "$status"
fi
tidy "" "${programs[@]}" || status=1
# Tests are not tuned, they join literals on purpose, and the analyzer takes minutes for them.
tidy "-clang-analyzer-*,-performance-*,-bugprone-suspicious-missing-comma" tests benchmarks ||
    status=1

exit "$status"
