#!/usr/bin/env bash
# Checks format and code of everything that is ours; every finding is an error.
# Requires: the release preset is configured (its compile_commands.json is used).
#
# Usage: scripts/lint.sh
set -euo pipefail
cd "$(dirname "$0")/.."

database=build/release
jobs=$(nproc)
folders=(source externals standin tools tests)

echo "lint: clang-format"
find "${folders[@]}" -name '*.cpp' -print0 -o -name '*.h' -print0 |
    xargs -0 clang-format --dry-run -Werror

echo "lint: cppcheck"
cppcheck --quiet -j "$jobs" --project="$database/compile_commands.json" \
    --enable=warning,style,performance,portability --inline-suppr --library=qt,googletest \
    --error-exitcode=1

echo "lint: clang-tidy"
find "${folders[@]}" -name '*.cpp' -print0 |
    xargs -0 -n 1 -P "$jobs" clang-tidy --quiet -p "$database"
