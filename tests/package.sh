#!/usr/bin/env bash
# Installs dist/vesk_VERSION_amd64.deb, which scripts/package made, into a clean Debian: the program
# must render from there, its manual open, hosts list the plugin, and nothing stay once it is removed.
# Needs root and debootstrap; takes about two minutes and 600 MB of /tmp meanwhile.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
packages=(dist/vesk_*_amd64.deb)
[ -e "${packages[0]}" ] || { echo "package: no dist/vesk_*_amd64.deb; first run: scripts/package" >&2; exit 1; }

root=$(mktemp -d)
trap '! mountpoint -q "$root/proc" || umount "$root/proc"; rm -rf --one-file-system "$root"' EXIT
fail() { echo "package: $*" >&2; exit 1; }
inside() { chroot "$root" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
quietly() { "$@" >"$root/log" 2>&1 || { tail -n 20 "$root/log" >&2; fail "failed: $*"; }; }

lintian --fail-on error --tag-display-limit 0 dist/vesk_*.deb
quietly debootstrap --variant=minbase --include=man-db,lilv-utils,sox bookworm "$root"
cp /etc/resolv.conf "$root/etc/"
mount -t proc proc "$root/proc"
listed() { inside find / -xdev -path /proc -prune -o -name '*vesk*' -print; }
[ -z "$(listed)" ] || fail "the clean root is not clean"

cp "${packages[0]}" "$root/root/package.deb"
quietly inside apt-get install -y --no-install-recommends /root/package.deb
quietly inside sox -n -r 48000 -c 2 /root/in.wav synth 1 pluck
quietly inside vesk render /root/in.wav /root/out.wav --preset tape --tail 1
inside test -s /root/out.wav || fail "nothing was rendered"
inside man vesk | grep -q -- --preset || fail "the manual does not name --preset"
inside bash -c '. /usr/share/bash-completion/completions/vesk; COMP_WORDS=(vesk render --pre)
  COMP_CWORD=2; _vesk; [ "${COMPREPLY[*]}" = --preset ]' || fail "--pre is not completed"
inside lv2ls | grep -qx urn:orvane:vesk || fail "lv2ls does not list the plugin"
quietly inside lv2info urn:orvane:vesk

quietly inside apt-get purge -y vesk
[ -z "$(listed)" ] || fail "left behind: $(listed)"
echo "installed, used and removed without a trace: ${packages[0]}"
