#!/usr/bin/env bash
# Tries the Debian packages on a machine on which nothing was ever installed: a
# root folder made with debootstrap, of which a copy is used.
#
#   packaging/try-packages.sh [FOLDER OF THE ROOT]
#
# First as a person would: `apt install ./*.deb` brings what is needed; the program
# is started, reads the simulated instrument, and a picture is taken. Then what
# the packages leave behind is looked for: with all that they need in place, the
# files before installing and after purging them are compared by their content.
# Needs root, debootstrap, cmark-gfm, the network for Debian's packages, and what
# ./run brings.
set -euo pipefail
cd "$(dirname "$0")/.."
root=${1:-$PWD/build/clean-root}
work=$root.tried
result=$PWD/build/packages
mirror=$(sed -n 's/^URIs: *//p' /etc/apt/sources.list.d/debian.sources 2>/dev/null | head -n 1)
ours=(velmo velmo-instrument velmo-calculation-server)

mkdir -p "$result"
. packaging/prepare.sh
prepare_packages packages-run.txt
build_targets build -- velmo_installed
(cd build && rm -f ./*.deb && cpack -G DEB >"$result/cpack.log" 2>&1)
[ -d "$root" ] || debootstrap --variant=minbase bookworm "$root" ${mirror:+"$mirror"} >"$result/debootstrap.log"
rm -rf "$work"
cp -a "$root" "$work"

# The network is cut off from what is started here: nothing of it is needed, and
# the machine's own ports stay free.
inside() { chroot "$work" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
as_person() { unshare -n sh -c 'ip link set lo up; exec "$@"' sh chroot --userspec=person:person "$work" env -i HOME=/home/person PATH=/usr/bin:/bin LC_ALL=C.UTF-8 "$@"; }
mounted=()
leave() {
  for ((i = ${#mounted[@]} - 1; i >= 0; --i)); do umount -l "${mounted[$i]}" || true; done
}
trap leave EXIT
for folder in proc dev dev/pts dev/shm; do
  mount --bind "/$folder" "$work/$folder"
  mounted+=("$work/$folder")
done
cp /etc/resolv.conf "$work/etc/resolv.conf"

# What a person's desktop has anyway, with the caches that packages get into, and
# what looks at it here.
inside apt-get update -qq
inside apt-get install -y -qq --no-install-recommends \
  appstream desktop-file-utils gtk-update-icon-cache man-db shared-mime-info udev \
  imagemagick openbox x11-utils xauth xdotool xvfb >"$result/desktop.log" 2>&1
inside useradd -m person
packages() { inside dpkg-query -W -f '${Package}\n' | sort; }
packages >"$result/packages-before"

mkdir -p "$work/tmp/packages"
cp build/*.deb "$work/tmp/packages/"
echo "Packages: $(cd build && ls -s --block-size=K ./*.deb | tr '\n' ' ')"
if command -v lintian >/dev/null; then
  lintian --tag-display-limit 0 build/*.deb >"$result/lintian.log" 2>&1 || true
  echo "lintian says $(grep -c '^E:' "$result/lintian.log" || true) errors and $(grep -c '^W:' "$result/lintian.log" || true) warnings: build/packages/lintian.log"
fi

try_program() {
  rm -rf "$work/home/person/tried"
  as_person mkdir /home/person/tried
  as_person sh -c 'cd ~/tried && xvfb-run -s "-screen 0 1600x1000x24" sh /tmp/use-velmo' 2>"$result/use.log"
}
cat >"$work/tmp/use-velmo" <<'USE'
set -e
openbox & manager=$!
velmo_calculation_server >calculation.log & server=$!
velmo_instrument --adb >instrument.log & instrument=$!
sleep 2
QTWEBENGINE_DISABLE_SANDBOX=1 velmo >velmo.log 2>&1 & program=$!
trap 'kill $program $instrument $server $manager; adb kill-server' EXIT
box_says() {
  timeout 180 xdotool search --sync --onlyvisible --name "$1" >/dev/null || { echo "no box says that $2"; exit 1; }
}
box_says 串口 "the instrument is found"
import -window root found.png
# A key that comes before the window has the keys is lost: try again.
for try in 1 2 3 4 5; do
  xdotool key Return
  sleep 2
  xdotool search --onlyvisible --name 串口 >/dev/null 2>&1 || break
done
xdotool search --onlyvisible --name '^Velmo$' windowactivate --sync
sleep 1
xdotool key F5
box_says 数据读取 "the read has ended"
sleep 2
import -window root read.png
grep -q listening calculation.log
USE

echo "Installing"
inside sh -c 'apt-get install -y -qq /tmp/packages/*.deb' >"$result/install.log" 2>&1 || { tail -n 20 "$result/install.log"; exit 1; }
packages >"$result/packages-after"
comm -13 "$result/packages-before" "$result/packages-after" >"$result/packages-brought"
echo "$(wc -l <"$result/packages-brought") packages came, ours among them"
inside desktop-file-validate /usr/share/applications/velmo.desktop
inside appstreamcli validate --no-net --pedantic /usr/share/metainfo/example.marlund.velmo.metainfo.xml || true
as_person man -P cat velmo velmo_instrument velmo_calculation_server | grep -c .

echo "Using it"
try_program
cp "$work"/home/person/tried/*.{png,log} "$result/"

echo "Removing it with all that came"
# With what other packages would like to have as well: it came with ours.
inside sh -c "apt-get purge -y -qq ${ours[*]} && apt-get autoremove --purge -y -qq \
  -o APT::AutoRemove::RecommendsImportant=false -o APT::AutoRemove::SuggestsImportant=false" >"$result/purge.log" 2>&1
packages | diff "$result/packages-before" - || { echo "These packages were left"; exit 1; }
echo "The same packages as before"

echo "Looking for what is left"
# shellcheck disable=SC2046 # one word for each package
inside apt-get install -y -qq $(grep -vxF "$(printf '%s\n' "${ours[@]}")" "$result/packages-brought") >>"$result/install.log" 2>&1
rm -rf "$work/home/person"
inside mkhomedir_helper person
# Content of all files but dpkg's own books.
content() {
  (cd "$work" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./sys -o -path ./tmp -o -path ./var/log \
    -o -path './var/lib/dpkg/*-old' -o -path ./var/lib/dpkg/status \) -prune \
    -o \( -type f -exec sha256sum {} + \) -o \( -type l -printf '%l  %p\n' \) -o -printf '%y  %p\n' | sort -k 2)
}
content >"$result/content-before"
inside sh -c 'dpkg -i /tmp/packages/*.deb' >>"$result/install.log" 2>&1
content >"$result/content-installed"
try_program
inside dpkg -P "${ours[@]}" >>"$result/purge.log" 2>&1
content >"$result/content-after"
echo "$(diff "$result/content-before" "$result/content-installed" | grep -c '^>') files, folders and links had come or changed. Left of it:"
if diff "$result/content-before" "$result/content-after" | grep '^[<>]' >"$result/left"; then
  cat "$result/left"
else
  echo "nothing"
fi
if grep -v '  ./home/person' "$result/left"; then
  echo "That was left behind outside the person's own folder."
  exit 1
fi
echo "Nothing but the person's own is left. Pictures: build/packages/"
