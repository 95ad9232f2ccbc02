#!/usr/bin/env bash
# The plugin live: a JACK server on its dummy driver, jalv as the host, a client that plays a
# recording into it and another that records, block by block, what goes in and comes out. Controls
# change meanwhile; every sample must be the plugin's own and the server may report no drop-out.
#
#   live.sh BUNDLES LIVE_CHECK     folder with vesk.lv2, the program that explains the recording
#
# Exit 77: a program is missing, and nothing was tested.
set -euo pipefail

bundles=$(realpath "$1") live_check=$(realpath "$2")
rate=44100 block=2048
recording=/usr/share/sonic-pi/samples/loop_amen.flac
# With repitch alone is the output free of how long the host has run before.
start=(delay_left=0.2 delay_right=0.15 repitch=1 mix=0.5 drywetmode=1)
later=(mix=0.8 feedback=0.9 delay_left=0.1 fbinvert=1 clear=1 width=0.3)

for program in jackd jack_wait jack_lsp jack_connect jack_rec jalv sndfile-jackplay sox; do
  command -v $program >/dev/null || { echo "live: not run, there is no $program" >&2; exit 77; }
done
[ -r $recording ] || { echo "live: not run, there is no $recording" >&2; exit 77; }

work=$(mktemp -d)
cd "$work"
started=()
# The server last, so that it takes back what its clients have left.
clean_up() {
  exec 8>&- 9>&-
  for ((i = ${#started[@]} - 1; i >= 0; --i)); do
    kill "${started[i]}" 2>/dev/null || true
    wait "${started[i]}" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap clean_up EXIT
fail() {
  echo "live: $*" >&2
  tail -n 20 server.log host.log recorder.log >&2 || true
  exit 1
}
# Until the server shows this line: a port, or indented one that it is connected to.
await() {
  for _ in {1..50}; do
    timeout 5 jack_lsp -c 2>/dev/null | grep "^$1$" >/dev/null && return
    sleep 0.2
  done
  fail "there was no $1"
}

sox -V1 $recording -b 16 played.wav repeat 2
mkfifo host.commands player.commands

# Not real-time, so with long cycles. A synchronous server (-S) would wait for a late client, but now
# and then it waits for good for one that has just gone.
export JACK_DEFAULT_SERVER=vesk-live-$$ JACK_NO_AUDIO_RESERVATION=1
jackd -r -n "$JACK_DEFAULT_SERVER" -d dummy -r $rate -p $block >server.log 2>&1 &
started+=($!)
jack_wait -w -t 10 >/dev/null 2>&1 || fail "the server did not come up"

controls=()
for setting in "${start[@]}"; do controls+=(-c "$setting"); done
# The host ends with its input, so that stays open.
LV2_PATH=$bundles jalv -x -n vesk "${controls[@]}" urn:orvane:vesk \
  <host.commands >host.log 2>&1 8>&- &
started+=($!)
exec 8>host.commands
# The player waits for a line.
sndfile-jackplay -w played.wav <player.commands >/dev/null 2>&1 8>&- &
started+=($!)
exec 9>player.commands
await vesk:out_right
await jackplay:out_2
timeout 5 jack_connect jackplay:out_1 vesk:in_left
timeout 5 jack_connect jackplay:out_2 vesk:in_right
sleep 1.2  # the delay lines and the read heads come to rest

timeout 30 jack_rec -f recorded.wav -d 6 -b 32 \
  jackplay:out_1 jackplay:out_2 vesk:out_left vesk:out_right >recorder.log 2>&1 8>&- 9>&- &
recorder=$!
await '   jackrec:input4'
sleep 0.3
echo >&9
sleep 1
for setting in "${later[@]}"; do
  echo "set ${setting/=/ }" >&8
  sleep 0.5
done
wait $recorder || fail "the recorder failed"

sox -V1 recorded.wav -t f32 recorded.f32
"$live_check" recorded.f32 $rate $block "${start[@]}" -- "${later[@]}" || fail "wrong output"
! grep -i -e xrun -e 'not finished' -e 'process error' server.log >&2 ||
  fail "the server reports a drop-out"
! grep -i overrun recorder.log >&2 || fail "the recorder lost samples"
echo "live: no drop-out"
