#!/usr/bin/env bash
# Builds what the demo builds and installs it into a temporary folder: every promised file must be
# there, and the program must play from there. An incomplete build must not be installed.
#
#   install.sh [CMAKE-OPTION ...]     in build/release, for which the options are
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD
build=$root/build/release

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/one & two"
fail() { echo "install: $*" >&2; exit 1; }
run() { "$@" >"$work/log" 2>&1 || { tail -n 30 "$work/log" >&2; fail "failed: $*"; }; }

run cmake --preset release "$@"
run cmake --build --preset release --target vesk_installation

# Every built file missing in turn, and one empty: nothing is installed.
refused() {
  if cmake --install "$build" --prefix "$prefix" >"$work/log" 2>&1; then fail "installed $1"; fi
  grep -qF "vesk: nothing was installed, not built: $2; first run: cmake --build" "$work/log" ||
    { cat "$work/log" >&2; fail "no clear line about $1"; }
  [ ! -e "$prefix" ] || fail "something was installed $1"
}
bundle=$build/lv2/vesk.lv2
for file in "$build"/{bin/vesk,host/libtesk_host.so,package/{externals/*.tkx64,docs/*.xml}} \
  "$bundle"/{vesk.so,manifest.ttl,vesk.ttl,presets.ttl}; do
  mv "$file" "$work/kept"
  trap 'mv -f "$work/kept" "$file"; rm -rf "$work"' EXIT
  refused "without ${file#"$build/"}" "$(basename "$file")"
  if [ "$file" = "$bundle/presets.ttl" ]; then
    : >"$file"
    refused "with an empty ${file#"$build/"}" "$(basename "$file")"
  fi
  mv "$work/kept" "$file"
  trap 'rm -rf "$work"' EXIT
done

run cmake --install "$build" --prefix "$prefix"
{
  printf '%s\n' bin/vesk lib/vesk/libtesk_host.so lib/lv2/vesk.lv2/{vesk.so,{manifest,vesk,presets}.ttl}
  printf 'lib/vesk/package/%s\n' README.md externals/orv.device.vesk~.tkx64 \
    docs/orv.device.vesk~.teskref.xml presets/*.txt scores/*.txt
} | sort >"$work/promised"
(cd "$prefix" && find . -type f -size +0 -printf '%P\n') | sort >"$work/installed"
diff "$work/promised" "$work/installed" >&2 || fail "not the promised files (left) are installed"

# From the installed files alone, in a folder from which the sources can't be seen.
cd "$work"
vesk="$prefix/bin/vesk"
ldd "$vesk" | grep -qF "$prefix/bin/../lib/vesk/libtesk_host.so" || fail "another host library is used"
! grep -rlF -- "$root" "$prefix" >&2 || fail "these files name the folder they were built in"
# A second of 16-bit mono at 8 kHz: one full-scale sample, then silence.
{
  printf 'RIFF\xa4\x3e\x00\x00WAVEfmt \x10\x00\x00\x00\x01\x00\x01\x00'
  printf '\x40\x1f\x00\x00\x80\x3e\x00\x00\x02\x00\x10\x00data\x80\x3e\x00\x00\xff\x7f'
  head -c 15998 /dev/zero
} >in.wav
"$vesk" render in.wav out.wav --preset reverse-slap --set mix=1 --tail 0 >told ||
  fail "the installed program doesn't render"
grep -q '^out.wav: 1.000 s, 8000 Hz, peak -\?[0-9.]* dBFS' told || fail "no echo: $(cat told)"
[ "$(stat -c %s out.wav)" -gt 64000 ] || fail "out.wav is too short for a second"

if command -v lv2ls >/dev/null; then
  [ "$(LV2_PATH="$prefix/lib/lv2" lv2ls 2>&1)" = urn:orvane:vesk ] ||
    fail "lv2ls doesn't list the plugin"
  listed=" and listed by lv2ls"
fi
echo "install: $(wc -l <promised) files, complete${listed-}; incomplete builds are refused"
