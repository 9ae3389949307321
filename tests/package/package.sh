#!/usr/bin/env bash
# package.sh FOLDER: builds the Debian package, installs it with its dependencies into a fresh Debian 12
# below FOLDER, and tries it there, as a user who is not root: versions and options, the window with the
# simulated instrument, where the data goes, and what a newer package leaves of an older one.
set -eu
source=$(cd "$(dirname "$0")/../.." && pwd)
mkdir -p "$1"
work=$(cd "$1" && pwd)
root="$work/root"

skip() { echo "SKIPPED: the package in a fresh system: $1"; exit 77; }
fail() { echo "FAILED: $1" >&2; exit 1; }
step() { echo "== $1 ($(date +%T))"; }

[ "$(id -u)" -eq 0 ] || skip "only root can make one"
command -v mmdebstrap >/dev/null || skip "mmdebstrap is not installed"

# With mounts of its own, which end with it: what is mounted below the root is not deleted with it.
[ "${2:-}" = in-own-mounts ] || exec unshare --mount --propagation private "$0" "$work" in-own-mounts

remove_root() {
    ! mountpoint -q "$root/proc" || umount "$root/proc"
    rm -rf --one-file-system "$root"
}
remove_root
trap remove_root EXIT

step "building the package"
"$source/scripts/package.sh" >"$work/build.log" 2>&1 || { tail -20 "$work/build.log"; fail "the build"; }
package=$(tail -n 1 "$work/build.log")
version=$(dpkg-deb -f "$package" Version)

step "installing into another folder, as the page on it says, after a build without all that it needs"
rm -rf "$work/prefix"
rm "$source/build/release/bin/scn4070a-store" "$source/build/release/packaging/scn4070a-store.1.gz"
commands=$(sed -n '/^Without a package/,/^`/{s/^    //p}' "$source/docs/install.md" | sed "s#/opt/scn4070a#$work/prefix#")
grep -q -F -e "--prefix $work/prefix" <<<"$commands" || fail "the page names no prefix"
(cd "$source" && bash -e -c "$commands") >"$work/prefix.log" 2>&1 || { tail -3 "$work/prefix.log"; fail "those commands"; }
[ "$("$work/prefix/bin/scn4070a-store" --version)" = "scn4070a-store $version" ] || fail "the installed command line for runs"

# An older one: another launcher, and a file that the newer has no more.
older="$work/older"
rm -rf "$older"
dpkg-deb -R "$package" "$older"
sed -i 's/^Version: .*/Version: 0.0.1/' "$older/DEBIAN/control"
printf '#!/bin/sh\necho scn4070a-launcher 0.0.1\n' >"$older/usr/bin/scn4070a-launcher"
touch "$older/usr/lib/scn4070a/gone-since"
dpkg-deb --root-owner-group -b "$older" "$work/older.deb" >/dev/null

step "making a fresh Debian 12"
mmdebstrap --variant=minbase bookworm "$root" >"$work/root.log" 2>&1 ||
    { tail -3 "$work/root.log"; skip "no Debian packages in reach"; }
mount -t proc proc "$root/proc"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mkdir -p "$root/packages"
cp "$work/older.deb" "$root/packages/older.deb"
cp "$package" "$root/packages/newer.deb"

inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
as_user() { inside setpriv --reuid=1000 --regid=1000 --clear-groups env HOME=/home/user "$@"; }
inside useradd -m -u 1000 user

step "installing an older version with its dependencies"
inside apt-get update -q >"$work/install.log" 2>&1
inside apt-get install -q -y --no-install-recommends /packages/older.deb xvfb xauth xdotool >>"$work/install.log" 2>&1 ||
    { tail -20 "$work/install.log"; fail "the installation"; }
[ "$(inside scn4070a-launcher)" = "scn4070a-launcher 0.0.1" ] || fail "the older launcher does not run"
as_user sh -c 'mkdir -p ~/.local/share/scn4070a/simulator/old_Data && echo mine >~/.local/share/scn4070a/simulator/old_Data/file'

step "installing version $version over it"
inside apt-get install -q -y --no-install-recommends /packages/newer.deb >>"$work/install.log" 2>&1 ||
    { tail -20 "$work/install.log"; fail "the newer version"; }
[ "$(inside dpkg-query -W -f='${Version}' scn4070a)" = "$version" ] || fail "the newer version is not there"
[ ! -e "$root/usr/lib/scn4070a/gone-since" ] || fail "a file of the older version is left"
inside dpkg --verify scn4070a || fail "files differ from the package"

step "fonts"
find "$root/usr/share/fonts" '(' -name 'wqy-*' -o -name '*CJK*' ')' | grep -q . || fail "no font with Chinese"

step "versions and options"
text=$(as_user env QT_QPA_PLATFORM=offscreen scn4070a-launcher --version 2>/dev/null)
[ "$text" = "scn4070a-launcher $version" ] || fail "the launcher says: $text"
as_user env QT_QPA_PLATFORM=offscreen scn4070a-launcher --help 2>/dev/null | grep -q -e --simulator || fail "--help of the launcher"
as_user scn4070a-sim --help | grep -q -e --pty || fail "--help of the simulator"
text=$(as_user scn4070a-store --version)
[ "$text" = "scn4070a-store $version" ] || fail "the command line for runs says: $text"
as_user scn4070a-store list >/dev/null || fail "the list of runs"

step "manual page, completion and pages of the command line for runs"
for file in man/man1/scn4070a-store.1.gz bash-completion/completions/scn4070a-store \
    doc/scn4070a/storetool.md doc/scn4070a/fleet.md doc/scn4070a/plot-example.png; do
    dpkg-deb -c "$package" | grep -q "/usr/share/$file$" || fail "the package has no $file"
done

step "the window with the simulated instrument"
cat >"$root/packages/session.sh" <<'SESSION'
set -eu
scn4070a-launcher --simulator /usr/bin/scn4070a-sim --slots 1:13 >/tmp/launcher.log 2>&1 &
launcher=$!
for i in $(seq 300); do
    if xdotool search --onlyvisible --name '^SCN4070A 控制软件$' >/dev/null 2>&1; then
        for process in /proc/[0-9]*; do readlink "$process/exe" 2>/dev/null || true; done | grep scn4070a | sort -u
        break
    fi
    sleep 0.2
done
kill "$launcher"
wait "$launcher" || true
SESSION
running=$(as_user xvfb-run -a -s "-screen 0 1500x900x24" sh /packages/session.sh)
data=/home/user/.local/share/scn4070a/simulator
wanted="$data/scn4070a
/usr/bin/scn4070a-launcher
/usr/bin/scn4070a-sim"
[ "$running" = "$wanted" ] || { cat "$root/tmp/launcher.log"; fail "these run, or no window came: $running"; }
cmp -s "$root$data/scn4070a" "$root/usr/lib/scn4070a/scn4070a" || fail "the user's copy is not up to date"
[ "$(cat "$root$data/old_Data/file")" = mine ] || fail "the user's data has changed"

step "removing it"
inside apt-get purge -q -y scn4070a >>"$work/install.log" 2>&1 || { tail -20 "$work/install.log"; fail "the removal"; }
left=$(cd "$root" && find usr etc var/lib -path var/lib/dpkg -prune -o -path var/lib/apt -prune -o -name '*scn4070a*' -print)
[ -z "$left" ] || fail "left behind: $left"
[ "$(cat "$root$data/old_Data/file")" = mine ] || fail "the user's data has gone"
step "done"
