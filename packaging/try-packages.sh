#!/usr/bin/env bash
# Tries the Debian packages on a machine on which nothing was ever installed: a
# root folder made with debootstrap. Installs them, starts the program under a
# virtual display, takes a picture of its window, removes them and names what
# they leave behind. Needs root, debootstrap and the network.
#
#   packaging/try-packages.sh [FOLDER FOR THE ROOT]
set -euo pipefail
cd "$(dirname "$0")/.."
root=${1:-$PWD/build/clean-root}
mirror=$(sed -n 's/^URIs: *//p' /etc/apt/sources.list.d/debian.sources 2>/dev/null | head -n 1)

(cd build && rm -f ./*.deb && cpack -G DEB >cpack.log)
[ -d "$root" ] || debootstrap --variant=minbase bookworm "$root" ${mirror:+"$mirror"} >build/debootstrap.log

inside() { chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
mounted=()
leave() {
  for ((i = ${#mounted[@]} - 1; i >= 0; --i)); do umount -l "${mounted[$i]}" || true; done
}
trap leave EXIT
for folder in proc dev dev/pts dev/shm; do
  mount --bind "/$folder" "$root/$folder"
  mounted+=("$root/$folder")
done
cp /etc/resolv.conf "$root/etc/resolv.conf"

# What a person's desktop has anyway: a display, and tools to look at it.
inside apt-get update -qq
inside apt-get install -y -qq --no-install-recommends xvfb xauth imagemagick x11-utils >/dev/null

files() { (cd "$root" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./sys -o -path ./tmp -o -path ./var/cache -o -path ./var/log -o -path ./var/lib/apt \) -prune -o -print | sort); }
before=$(mktemp)
after=$(mktemp)
files >"$before"

mkdir -p "$root/tmp/packages"
cp build/*.deb "$root/tmp/packages/"
echo "Installing: $(cd build && ls ./*.deb | tr '\n' ' ')"
inside sh -c 'apt-get install -y -qq /tmp/packages/*.deb >/tmp/install.log 2>&1' || { tail -n 20 "$root/tmp/install.log"; exit 1; }

echo "Starting the program"
inside sh -c 'cd / && QTWEBENGINE_DISABLE_SANDBOX=1 XDG_DATA_HOME=/tmp/data xvfb-run -s "-screen 0 1600x1000x24" sh -c "
  velmo >/tmp/velmo.log 2>&1 & program=\$!; sleep 15
  xwininfo -root -tree | grep -i velmo | head -n 1
  import -window root /tmp/velmo.png
  kill \$program; wait"' || true
cp "$root/tmp/velmo.png" build/packaged-window.png
grep -q . "$root/tmp/velmo.log" && tail -n 5 "$root/tmp/velmo.log"
inside adb kill-server 2>/dev/null || true

echo "Removing"
inside sh -c 'apt-get purge -y -qq "velmo*" >/tmp/purge.log 2>&1 && apt-get autoremove --purge -y -qq >>/tmp/purge.log 2>&1'
files >"$after"
left=$(comm -13 "$before" "$after" | grep -i velmo || true)
rm -f "$before" "$after"
if [ -n "$left" ]; then
  echo "Left behind:"
  echo "$left"
  exit 1
fi
echo "Nothing of Velmo is left. Picture of the window: build/packaged-window.png"
