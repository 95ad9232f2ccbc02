#!/usr/bin/env bash
# Runs the examples of the README: every indented line that begins with `vesk`, in their order.
#   readme.sh PROGRAM README
set -euo pipefail
program=$(realpath "$1") readme=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "readme: $*" >&2; exit 1; }

# A second of 16-bit mono at 8 kHz: a decaying burst.
{
  printf 'RIFF\xa4\x3e\x00\x00WAVEfmt \x10\x00\x00\x00\x01\x00\x01\x00'
  printf '\x40\x1f\x00\x00\x80\x3e\x00\x00\x02\x00\x10\x00data\x80\x3e\x00\x00'
  head -c 800 "$program" | tr -d '\200-\377' | head -c 400
  head -c 16000 /dev/zero
} | head -c 16044 >burst.wav
"$program" render burst.wav guitar.flac --set mix=0 --tail 0 --quiet
mkdir -p recordings/loud
cp guitar.flac recordings/one.flac
cp guitar.flac recordings/loud/two.flac
printf 'guitar.flac\tlisted.wav\tmix=0.3; delay=0.2,0.3\n' >list.txt

vesk() { "$program" "$@"; }
count=0
while read -r line; do
  eval "$line" >told 2>&1 || fail "$line: $(cat told)"
  [ -s told ] || fail "$line: reports nothing"
  count=$((count + 1))
done < <(sed -n 's/^    \(vesk .*\)/\1/p' "$readme")
[ $count -ge 8 ] || fail "only $count examples"
for file in out.wav out.flac listed.wav echoes/one.flac echoes/loud/two.flac; do
  [ -s "$file" ] || fail "no $file"
done
echo "readme: $count examples ran"
