#!/usr/bin/env bash
# Prints CHANGELOG.md as the changelog of the Debian packages.
#
# Usage: scripts/debian-changelog.sh
set -euo pipefail
cd "$(dirname "$0")/.."

trailer=
while IFS= read -r line; do
    if [[ $line =~ ^'## '([0-9.]+-[0-9]+)' ('([0-9-]+)')'$ ]]; then
        [[ -z $trailer ]] || printf '\n%s\n\n' "$trailer"
        printf 'vx-simulator (%s) bookworm; urgency=medium\n\n' "${BASH_REMATCH[1]}"
        trailer=" -- vx-simulator maintainers <maintainers@vx-simulator.example>"
        trailer+="  $(LC_ALL=C date -u -R -d "${BASH_REMATCH[2]} 12:00")"
    elif [[ $line == '## '* ]]; then
        echo "debian-changelog: '$line': expected '## VERSION-REVISION (YYYY-MM-DD)'" >&2
        exit 1
    elif [[ -n $trailer && $line == '- '* ]]; then
        printf '  * %s\n' "${line#- }"
    elif [[ -n $trailer && -n $line ]]; then
        printf '    %s\n' "${line#"${line%%[! ]*}"}"
    fi
done <CHANGELOG.md
printf '\n%s\n' "$trailer"
