#!/bin/bash
# Faults while the program plays: signals, a full disk, a folder that can't be written, an output
# that appears meanwhile. Every fault ends with its exit code and leaves no file of ours.
#   faults.sh PROGRAM OBJECT [sanitized]
# A sanitized program reserves more memory than the limit set here allows, so that test is left out.
set -u
program=$(readlink -f "$1") object=$(readlink -f "$2")
work=$(mktemp -d)
trap 'mountpoint -q "$work/small" && umount "$work/small"; rm -rf "$work"' EXIT
cd "$work" || exit 1
mkdir out
failures=0

fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }
expect() { [ "$2" = "$3" ] || fail "$1: \"$2\", expected \"$3\""; }
nothing_left_in() { expect "$1 after $2" "$(ls -A "$1")" ""; }
# The render that ran last.
failed() {
    expect "$1" $? 1
    expect "$1: its line" "$(tail -n 1 err)" "render: $2"
}
render() { "$program" render --object "$object" "$@"; }

# A WAV header of a stream of mono 16 bit samples at 8 kHz, without a length.
stream_header() {
    printf 'RIFF\xff\xff\xff\xffWAVEfmt \x10\x00\x00\x00\x01\x00\x01\x00'
    printf '\x40\x1f\x00\x00\x80\x3e\x00\x00\x02\x00\x10\x00data\xff\xff\xff\xff'
}
stream() { stream_header; head -c "$1" /dev/zero; }

# Signals, while it plays and while it waits for a pipe that says nothing.
for row in INT:130 TERM:143 HUP:129 QUIT:131; do
    for kind in playing waiting; do
        mkfifo pipe
        if [ $kind = playing ]; then (stream_header; cat /dev/zero) >pipe 2>/dev/null &
        else (stream 400000; sleep 30) >pipe & fi
        feeder=$!
        # In its own session and with signals as a terminal's program has them.
        setsid env --default-signal "$program" render --object "$object" - out/o.wav <pipe >/dev/null 2>err &
        player=$!
        for _ in $(seq 100); do
            compgen -G 'out/.o.wav.part-*' >/dev/null && break
            sleep 0.05
        done
        compgen -G 'out/.o.wav.part-*' >/dev/null || fail "no unfinished file while $kind"
        kill -"${row%:*}" $player
        wait $player
        expect "${row%:*} while $kind" $? "${row#*:}"
        nothing_left_in out "${row%:*} while $kind"
        kill $feeder 2>/dev/null
        wait $feeder 2>/dev/null
        rm pipe
    done
done

# An output that comes there while it plays stays as it is.
(stream 100000; sleep 1; head -c 1000 /dev/zero) | render - out/o.wav >/dev/null 2>err &
player=$!
sleep 0.5
echo other >out/o.wav
wait $player
failed "output that appears" "out/o.wav: can't be written: File exists"
expect "its bytes" "$(cat out/o.wav)" other
stream 1000 | render - out/o.wav --force --quiet 2>/dev/null
expect "replaced when asked" $? 0
expect "only it is there" "$(ls -A out)" o.wav
rm out/o.wav

# A limit on the size of files is an error as a full disk is one.
(ulimit -f 100; stream 1000000 | render - out/o.wav >/dev/null 2>err)
failed "file too large" "out/o.wav: can't be written: File too large"
nothing_left_in out "a file too large"

# A file that will exceed 4 GiB begins as RF64.
printf 'RIFF\x28\x00\x00\x00WAVEfmt \x10\x00\x00\x00\x01\x00\x01\x00' >fast.wav
printf '\x00\xdc\x05\x00\x00\xb8\x0b\x00\x02\x00\x10\x00data\x04\x00\x00\x00\x00\x00\x00\x00' >>fast.wav
"$program" render --object "$object" fast.wav out/o.wav --tail 1400 >/dev/null 2>err &
player=$!
for _ in $(seq 100); do
    begins=$(head -c 4 out/.o.wav.part-* 2>/dev/null)
    [ -n "$begins" ] && break
    sleep 0.05
done
kill $player
wait $player
expect "above 4 GiB" "$begins" RF64
nothing_left_in out "a file above 4 GiB"

# A long score, sorted and acted on without much time or memory.
awk 'BEGIN { srand(1); for (i = 0; i < 100000; ++i) print rand() * 10, "gain", rand() }' >score
stream 160000 >in.wav
start=$SECONDS
render in.wav out/o.wav --score score --quiet 2>err
expect "a score of 100000 lines" $? 0
[ $((SECONDS - start)) -le 20 ] || fail "a score of 100000 lines took $((SECONDS - start)) s"
rm out/o.wav

# Memory does not grow with the length of the file: an hour, 55 MiB in and 220 MiB out, in 64 MiB
# of addresses with all libraries.
if [ "${3-}" != sanitized ]; then
    (ulimit -v 65536; stream 57600000 | render - out/o.wav --tail 0 --quiet 2>err) ||
        fail "memory: $(tail -n 1 err)"
    rm -f out/o.wav
fi

if [ "$(id -u)" != 0 ] || ! mkdir small || ! mount -t tmpfs -o size=256k tmpfs small 2>/dev/null; then
    echo "skipped: a full disk and a folder that can't be written need root and mount"
    exit $((failures > 0))
fi
for suffix in wav w64 flac; do
    # FLAC needs something that does not pack away.
    (stream_header; head -c 2000000 /dev/urandom) | render - small/o.$suffix >/dev/null 2>err
    failed "full disk" "small/o.$suffix: can't be written: No space left on device"
    nothing_left_in small "a full disk"
done
mount -o remount,ro small
stream 1000 | render - small/o.wav >/dev/null 2>err
failed "folder that can't be written" "small/o.wav: can't be written: Read-only file system"
exit $((failures > 0))
