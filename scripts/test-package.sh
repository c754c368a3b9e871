#!/usr/bin/env bash
# Makes the Debian packages in build/package, checks them, installs the program's in a clean root
# and plays what it brings there.
#
# Usage: scripts/test-package.sh
# Requires: root, for the root directory is entered with chroot.
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C.UTF-8

fail() {
    echo "test-package: $*" >&2
    exit 1
}

[[ $EUID -eq 0 ]] || fail "this needs root"
scripts/setup.sh build sandbox package
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)

for page in man/*; do
    warnings=$(man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
    [[ -z $warnings ]] || fail "$page: $warnings"
done

scripts/make-packages.sh
lintian --fail-on error --display-info --tag-display-limit 0 build/package/*.deb build/package/*.ddeb |
    tee build/package/lintian.log
grep 'hardening-no-\|unstripped\|unused-override' build/package/lintian.log && fail "see above"
for package in vx-simulator vx-simulator-tools; do
    symbols=$(echo build/package/$package-dbgsym_*.ddeb)
    contents=$(dpkg-deb --contents "$symbols")
    grep -q '/usr/lib/debug/.*\.debug$' <<<"$contents" || fail "no symbols of $package"
    unpacked=build/package/symbols/$package
    rm -rf "$unpacked"
    mkdir -p "${unpacked%/*}"
    dpkg-deb --raw-extract "$symbols" "$unpacked"
    (cd "$unpacked" && md5sum --quiet --strict -c DEBIAN/md5sums) || fail "$symbols: md5sums"
    ! grep -rlF "$PWD" "$unpacked" || fail "$symbols: the path of the build is in it"
done

# Each option that a program explains is completed.
commands=(source/vx-simulator tools/sandbox/vx-sandbox tools/control/vx-control)
for tool in tools/case/vx-case tools/campaign/vx-campaign; do
    commands+=("$tool")
    while read -r subcommand; do
        commands+=("$tool $subcommand")
    done < <("build/package/$tool" --help | sed '1,/^Subcommands:/d' | sed -n 's/^  \([a-z]*\).*/\1/p')
done
for command in "${commands[@]}"; do
    read -ra words <<<"build/package/$command"
    completion=completions/${words[0]##*/}
    options=$("${words[@]}" --help | sed -n '/^  -/p' | grep -o -- '--[a-z][a-z-]*')
    for option in $options; do
        grep -q -- "$option\\b" "$completion" || fail "$completion lacks $option"
    done
done

# The unit of the package, with the program of the build, for that of the package is not installed.
unit=build/package/install/verify/vx-simulator.service
mkdir -p "${unit%/*}"
sed "s#^ExecStart=/usr/bin#ExecStart=$PWD/build/package/source#; /^Documentation/d" \
    build/package/install/vx-simulator.service >"$unit"
systemd-analyze verify --man=no "$unit"
stop=$(sed -n 's/^ExecStopPost=//p' "$unit")
# The unit is failed when the program ended by itself, whatever its status; stopped, it is not.
for end in "exited 0 1" "killed TERM 0" "dumped SEGV 0"; do
    read -r EXIT_CODE EXIT_STATUS expected <<<"$end"
    status=0
    (export EXIT_CODE EXIT_STATUS; eval "${stop//\$\$/\$}") || status=$?
    [[ $status -eq $expected ]] || fail "ExecStopPost after $end: $status"
done
systemd-analyze security --offline=true --threshold=20 "$unit" | tail -1

root=$(mktemp -d /tmp/vx-root.XXXXXX)
trap 'rm -rf --one-file-system "$root"' EXIT
package=$PWD/$(echo build/package/vx-simulator_*.deb)
chmod 0755 "$root"
echo "test-package: installing in $root"
mmdebstrap --quiet --variant=apt --hook-dir=/usr/share/mmdebstrap/hooks/file-mirror-automount \
    --include="$package" "$release" "$root" - \
    <<<"$(scripts/debian-sources.sh)"

# These mounts are made in the sandbox's own namespace and are gone with it.
play="for path in /dev /proc /sys /etc/vx; do mount --rbind \$path $root\$path; done"
play+="; exec chroot $root vx-simulator"
build/package/tools/sandbox/vx-sandbox --record build/package/recording.bin --send 1:s1 --for 3 -- \
    sh -c "$play" | tee build/package/played.log
grep -q 'Execute Config 1 once' build/package/played.log || fail "the command was not taken"
grep -q 'refused writes *0$' build/package/played.log || fail "writes were refused"

# Each link between the installed pages leads to a page.
(
    cd "$root/usr/share/doc/vx-simulator"
    for page in *.md doc/*.md; do
        while read -r link; do
            [[ -e ${page%"${page##*/}"}$link ]] || fail "installed $page: no $link"
        done < <(sed -n 's/](\([^)#:]*\)[)#]/\n&\n/gp' "$page" | sed -n 's/^](\(..*\)[)#]$/\1/p')
    done
)

# What the package's scripts ask of systemd and udev, with the driver loaded, and whether the rule
# was there then. The service has failed.
mkdir -p "$root/run/systemd/system"
touch "$root/dev/adc-in"
for tool in systemctl udevadm; do
    cat >"$root/usr/local/bin/$tool" <<'END'
#!/bin/sh
rule=with; [ -e /lib/udev/rules.d/90-vx-simulator.rules ] || rule=without
case "$*" in
    *is-enabled*) echo enabled; exit ;;
    *is-active*) exit 3 ;;
esac
echo "$rule rule: ${0##*/} $*" >>/calls
END
    chmod +x "$root/usr/local/bin/$tool"
done
cp "$package" "$root/again.deb"
chroot "$root" dpkg --remove vx-simulator
chroot "$root" dpkg --install /again.deb
diff - "$root/calls" <<'END' || fail "the package's scripts asked for something else"
with rule: systemctl stop vx-simulator.service
without rule: systemctl daemon-reload
without rule: udevadm control --reload
without rule: udevadm trigger /dev/adc-in
without rule: udevadm settle --timeout=10
with rule: systemctl daemon-reload
with rule: udevadm control --reload
with rule: udevadm trigger /dev/adc-in
with rule: udevadm settle --timeout=10
with rule: systemctl --quiet --system restart vx-simulator.service
END

# What a purge takes with it, and what it leaves.
enabled=$root'/etc/systemd/system/dev-adc\x2din.device.wants/vx-simulator.service'
[[ -L $enabled ]] || fail "the service is not enabled: $enabled"
mkfifo "$root/etc/vx/simulator_control"
mkdir -p "$root/var/log/vx-simulator"
touch "$root/etc/vx/vx-simulator.conf" "$root/var/log/vx-simulator/vx-simulator.log"
chroot "$root" dpkg --purge vx-simulator
for gone in "$enabled" "$root"/{etc/vx/simulator_control,var/log/vx-simulator,opt/vx}; do
    [[ ! -e $gone && ! -L $gone ]] || fail "a purge leaves $gone"
done
for kept in opt etc/vx/vx-simulator.conf; do
    [[ -e $root/$kept ]] || fail "a purge takes /$kept away"
done
echo "test-package: passed"
