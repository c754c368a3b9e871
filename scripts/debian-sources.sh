#!/usr/bin/env bash
# Prints the machine's own package sources of its Debian release, for mmdebstrap: the release alone,
# without its updates.
#
# Usage: scripts/debian-sources.sh
set -euo pipefail

release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
# shellcheck disable=SC2016  # apt-get replaces the names, not the shell
sources=$(apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' "Release: $release" | sort -u)
if [[ -z $sources ]]; then
    echo "debian-sources: no archive of '$release' in the package sources;" \
        "after changing them, run: apt-get update" >&2
    exit 1
fi
echo "$sources"
