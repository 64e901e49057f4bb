#!/usr/bin/env bash
# Tries the Debian package in a bare Debian 12: lintian, installation without what is only recommended,
# start on a virtual display, upgrade, removal. Asks the network, needs root, and is no part of ./test.
#
#   tools/try_package.sh [FOLDER]   FOLDER, build/try where none is given, keeps the bare system for the
#                                   next time
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
[ "$(id -u)" -eq 0 ] || { echo "Only root can make a system of its own." >&2; exit 1; }

folder=$(realpath -m "${1:-build/try}")
bare=$folder/bare
root=$folder/root
user=tester
work=/home/$user/.local/share/velantor-suite

fail() {
    echo "The package does not hold: $*" >&2
    exit 1
}

inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

put_away() {
    [ -z "${suite:-}" ] || kill "$suite" 2>/dev/null || true
    [ -z "${display_server:-}" ] || kill "$display_server" 2>/dev/null || true
    umount -q "$root/dev/pts" "$root/proc" 2>/dev/null || true
}

# Starts the suite as a plain user and waits until its window shows its name.
start_suite() {
    # In place of the shell that is forked for it, so that its number is known.
    (exec chroot --userspec=$user:$user "$root" env -i HOME=/home/$user PATH=/usr/bin:/bin \
        LC_ALL=C.UTF-8 DISPLAY=":$display" velantor-suite >"$folder/suite.log" 2>&1) &
    suite=$!
    timeout 60 env DISPLAY=":$display" xdotool search --sync --onlyvisible \
        --name '^Velantor Software Suite' >"$folder/windows" || fail "no window after a minute"
    DISPLAY=:$display import -window root "$folder/$1.png"
    kill "$suite"
    wait "$suite" || true
    suite=
}

need_packages "${display_packages[@]}" debootstrap lintian
./package
deb=$(ls -t build/release/velantor-suite_*.deb | head -1)
lintian --fail-on error,warning --allow-root "$deb"

mkdir -p "$folder"
if [ ! -e "$bare/complete" ]; then
    rm -rf "$bare"
    debootstrap --variant=minbase bookworm "$bare" >"$folder/debootstrap.log"
    touch "$bare/complete"
fi
mountpoint -q "$root/proc" && { echo "$root is in use" >&2; exit 1; }
rm -rf "$root"
cp -a "$bare" "$root"
trap put_away EXIT
mount -t proc proc "$root/proc"
mount --bind /dev/pts "$root/dev/pts"
inside useradd -m $user
inside apt-get update -qq
exec 3>"$folder/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp >"$folder/xvfb.log" 2>&1 &
display_server=$!
exec 3>&-

echo "Install"
cp "$deb" "$root/first.deb"
inside apt-get install -y -qq --no-install-recommends /first.deb >"$folder/install.log"
inside dpkg -L velantor-suite >"$folder/files"
until [ -s "$folder/display" ]; do sleep 0.1; done
display=$(cat "$folder/display")
start_suite first-start
cmp "$root/usr/bin/vexa" "$root$work/vexa.bin" || fail "the suite unpacks another uploader"

echo "Upgrade"
echo "automatic_updates false" >"$root$work/config.txt"
(cd build/release && cpack -D CPACK_DEBIAN_PACKAGE_RELEASE=999 -B "$folder/newer" >"$folder/cpack.log")
cp "$folder"/newer/*.deb "$root/second.deb"
rm -r "$folder/newer"
inside apt-get install -y -qq --no-install-recommends /second.deb >"$folder/upgrade.log"
inside dpkg-query -W velantor-suite | grep -q -- '-999$' || fail "the upgrade left the old version"
start_suite second-start

echo "Remove"
inside apt-get purge -y -qq velantor-suite >"$folder/purge.log"
while read -r path; do
    [ ! -f "$root$path" ] || fail "$path stays"
done <"$folder/files"
left=$(find "$root" -xdev \( -path "$root/home" -o -path "$root/proc" \) -prune -o \
    \( -name '*velantor*' -o -name 'vexa*' \) -print)
[ -z "$left" ] || fail "stays: $left"
[ "$(cat "$root$work/config.txt")" = "automatic_updates false" ] || fail "the user's file is gone"

echo "The package holds; pictures of its starts are in $folder"
