#!/usr/bin/env bash
# The plugin live: a JACK server on its dummy driver, jalv as the host, a client that plays a
# recording into it and another that records what goes in and comes out. The host starts from a saved
# state. Controls and the server's tempo change while it plays; before and after, the output must be
# what lv2apply makes of the recorded input, and the server may report no drop-out.
#
#   live.sh BUNDLES SAVE_STATE     folder with vesk.lv2; the program of save_state.cpp
#
# Exit 77: a program is missing, and nothing was tested.
set -euo pipefail

export LV2_PATH
LV2_PATH=$(realpath "$1")
save_state=$2
recording=/usr/share/sonic-pi/samples/loop_amen.flac
# With repitch alone is the output free of how long the host has run before.
start=(delay_left=0.2 delay_right=0.15 repitch=1 mix=0.5 drywetmode=1)
later=(mix=0.8 feedback=0.9 sync=1 division_right=7 fbinvert=1 clear=1 width=0.3 reset=1)
# A quarter and an eighth at the tempo.
tempo=150 at_tempo=(sync=0 delay_left=0.4 delay_right=0.2)

for program in "$save_state" jackd jack_wait jack_transport jack_lsp jack_connect jack_rec jalv sndfile-jackplay sox lv2apply; do
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
# A player, which waits for a line on 9, while the command given runs.
play() {
  sndfile-jackplay -w $recording <player.commands >/dev/null 2>&1 8>&- &
  player=$!
  started+=($player)
  exec 9>player.commands
  await jackplay:out_2
  timeout 5 jack_connect jackplay:out_1 vesk:in_left
  timeout 5 jack_connect jackplay:out_2 vesk:in_right
  "$@"
  exec 9>&-
  wait $player || true
}
change() {
  echo >&9
  for setting in "${later[@]}"; do
    sleep 0.2
    echo "set ${setting/=/ }" >&8
  done
  # The last tempo stays when the transport stops and whoever tells it goes.
  { for command in master "tempo $tempo" play stop exit; do echo "$command"; sleep 0.4; done; } |
    timeout 10 jack_transport >transport.log 2>&1 8>&- 9>&-
}
record() {
  timeout 30 jack_rec -f recorded.wav -d 3 -b 32 \
    jackplay:out_1 jackplay:out_2 vesk:out_left vesk:out_right >recorder.log 2>&1 8>&- 9>&- &
  recorder=$!
  await '   jackrec:input4'
  echo >&9
  wait $recorder || fail "the recorder failed"
  ! grep -i overrun recorder.log >&2 || fail "the recorder lost samples"
}
louder() { sox -V1 "$1" -n stats 2>&1 | awk -v than="$2" '/Pk lev/ { exit $4 == "-inf" || $4 < than }'; }
# The settings are those that the plugin should have.
compare() {
  # A second of silence first, as the host had it.
  sox -V1 recorded.wav -e floating-point in.wav remix 1 2 pad 1
  sox -V1 recorded.wav -e floating-point played.wav remix 3 4 pad 1
  lv2apply -i in.wav -o wanted.wav $(printf -- '-c %s ' "$@" | tr = ' ') urn:orvane:vesk
  for file in in played; do louder $file.wav -20 || fail "$file.wav is all but silent"; done
  # The recorder rounds input and output to 32 bits of a whole number.
  sox -V1 -m -v 1 played.wav -v -1 wanted.wav off.wav
  ! louder off.wav -120 || fail "other samples than the plugin's, at $*"
}

mkfifo host.commands player.commands
# Not real-time, so with long cycles. A synchronous server (-S) would wait for a late client, but now
# and then it waits for good for one that has just gone.
export JACK_DEFAULT_SERVER=vesk-live-$$ JACK_NO_AUDIO_RESERVATION=1
jackd -r -n "$JACK_DEFAULT_SERVER" -d dummy -r 44100 -p 2048 >server.log 2>&1 &
started+=($!)
jack_wait -w -t 10 >/dev/null 2>&1 || fail "the server did not come up"

# The host ends with its input, so that stays open.
"$save_state" "$LV2_PATH/vesk.lv2" state "${start[@]}" || fail "the state was not saved"
jalv -x -n vesk -l state <host.commands >host.log 2>&1 8>&- &
started+=($!)
exec 8>host.commands
await vesk:out_right
sleep 1.2  # the delay lines and the read heads come to rest
play record
compare "${start[@]}"
play change
for held in 0 1; do
  echo "set reset $held" >&8
  sleep 1
done
play record
compare "${start[@]}" "${later[@]}" "${at_tempo[@]}"
! grep -i -e xrun -e 'not finished' -e 'process error' server.log >&2 ||
  fail "the server reports a drop-out"
echo "live: no drop-out"
