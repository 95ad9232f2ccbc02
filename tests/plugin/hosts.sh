#!/usr/bin/env bash
# The bundle in the hands of programs from elsewhere: validated, listed, and played over a recording,
# where every program must give the same samples and the object's renderer those too.
#
#   hosts.sh BUNDLES PRESETS VESK     folder with vesk.lv2, folder of preset files, the renderer
#
# Exit 77: a program is missing, and nothing was tested.
set -euo pipefail

bundles=$(realpath "$1") presets=$(realpath "$2") vesk=$3
uri=urn:orvane:vesk
recording=/usr/share/sonic-pi/samples/loop_amen.flac

for program in lv2_validate sord_validate lv2ls lv2info lv2apply lv2bench lv2file nm sndfile-cmp sox \
  ffmpeg gst-launch-1.0 "$vesk"; do
  command -v "$program" >/dev/null || { echo "hosts: not run, there is no $program" >&2; exit 77; }
done
[ -r $recording ] || { echo "hosts: not run, there is no $recording" >&2; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
# Some of the programs split paths at blanks.
ln -s "$bundles" bundles
bundles=$work/bundles bundle=$work/bundles/vesk.lv2
fail() { echo "hosts: $*" >&2; exit 1; }
same() { sndfile-cmp "$1" "$2" || fail "$3"; }

# The validator passes over what isn't there, so the files are named.
texts=("$bundle"/{manifest,vesk,presets}.ttl)
for text in "${texts[@]}"; do [ -s "$text" ] || fail "there is no $text"; done
lv2_validate "${texts[@]}" >validated 2>&1 || { cat validated >&2; fail "the bundle is not valid"; }
grep -q '^Found 0 errors' validated || fail "the validator found errors"
# It says so of a file of LV2's own.
! grep -v -e '^Found 0 errors' -e 'Skipping file .*lv2core.doap.ttl' validated >&2 ||
  fail "the validator warned"

for text in "$bundle"/vesk.ttl; do
  for property in symbol name shortName; do
    twice=$(sed -n "s/.*lv2:$property \"\(.*\)\".*/\1/p" "$text" | sort | uniq -d)
    [ -z "$twice" ] || fail "$property of two ports or groups: $twice"
  done
  ! grep -E 'lv2:shortName ".{17,}"' "$text" >&2 || fail "a short name of over 16 characters"
  ! grep -E 'lv2:(minor|micro)Version [0-9]*[13579] ' "$text" >&2 || fail "a version under development"
done

exported=$(nm -D --defined-only "$bundle/vesk.so" | sed 's/.* //')
[ "$exported" = lv2_descriptor ] || fail "exports $exported, expected lv2_descriptor alone"

export LV2_PATH=$bundles GST_REGISTRY=$work/registry
[ "$(lv2ls 2>&1)" = $uri ] || fail "lv2ls shows something else than $uri"
# The name of its class stands with LV2's own bundles.
LV2_PATH=$bundles:/usr/lib/lv2 lv2info $uri >info 2>warnings || fail "lv2info failed"
[ ! -s warnings ] || { cat warnings >&2; fail "lv2info warned"; }
# A port an attribute, two a list, of audio four, of events one, eight of the plugin's own (three of
# them note values), two triggers, six readouts; the renderer lists the attributes.
"$vesk" attributes --json >attributes
of() { grep -c "\"type\": *\"$1\"" attributes || true; }
shows() { [ "$(grep -c "$1" info)" = "$2" ] || fail "lv2info shows $(grep -c "$1" info) of $1, expected $2"; }
shows $'^\tPort [0-9]*:' $(($(of number) + 2 * $(of list) + $(of toggle) + $(of choice) + 21))
shows '#AudioPort' 4
shows '#toggled' $(($(of toggle) + 6))
shows '#enumeration' $(($(of choice) + 4))
shows '#hardRTCapable' 1
shows 'Class: *Delay Plugin' 1
delay=$(sed -n '/Symbol: *delay_right$/,/^$/p' info | tr -s '\t ' ' ')
for line in 'Name: Delay time right' 'Minimum: 0.001' 'Maximum: 5.0' 'Default: 0.375' 'http://lv2plug.in/ns/ext/port-props#logarithmic'; do
  grep -q "$line" <<<"$delay" || fail "delay_right shows no $line"
done

# One title in each preset file, each title in the list.
sed -sn '1s/^# *\([^:]*\):.*/\1/p' "$presets"/*.txt | sort >titles
lv2file -L $uri 2>&1 | sed -n 's/^Preset: //p' | sort >listed
diff titles listed >&2 || fail "the presets listed are not those of $presets"
[ "$(wc -l <titles)" = "$(ls "$presets" | wc -l)" ] || fail "a preset has no title"

# One delay is that of both sides.
printf '# One: delay\ndelay 0.2\n' >one.txt
"$(dirname "$vesk")/write_turtle" . vesk.so 1.0.0 one.txt
[ "$(grep -A 1 'delay_' presets.ttl | grep -c 'pset:value 0.2')" = 2 ] || fail "a preset of one delay"
printf '# Loud: feedback\nfeedback 1.6\n' >loud.txt
! "$(dirname "$vesk")/write_turtle" . vesk.so 1.0.0 loud.txt 2>/dev/null || fail "a value out of range"

# Files of floats, so that no sample is rounded on its way, nor cut by lv2file at full scale.
sox -V1 $recording -e floating-point -b 32 in.wav
render() { "$vesk" render --quiet --force --tail 0 --vector 64 in.wav "$@"; }

# Of its own names the program makes with hyphens; a toggle takes true.
named_by_gstreamer() {
  for setting; do
    local symbol=${setting%=*} value=${setting#*=}
    case $symbol in repitch | fbinvert | mod_mult | duck | gate | clip) value=true ;; esac
    echo "${symbol//_/-}=$value"
  done
}

# A line: settings. For the renderer delay is one, which comes first as the plugin types its box.
while read -r settings; do
  typed=$(sed 's/delay_left=\([^ ]*\) delay_right=/delay=\1,/; s/[a-z_]*=/--set &/g' <<<"$settings")
  lv2apply -i in.wav -o ours.wav $(sed 's/\([a-z_]*\)=/-c \1 /g' <<<"$settings") $uri
  for frames in 1 64 1000 4096; do
    lv2file --ignore-clipping -b $frames -i in.wav -o other.wav \
      $(sed 's/\([a-z_]*\)=/-p \1:/g' <<<"$settings") $uri >/dev/null
    same ours.wav other.wav "blocks of 1 and of $frames differ at $settings"
  done
  render rendered.wav $typed
  same ours.wav rendered.wav "lv2apply and the renderer differ at $settings"
  ! sndfile-cmp in.wav ours.wav >/dev/null || fail "nothing was done at $settings"
  ffmpeg -nostdin -v error -y -i in.wav -af "lv2=p=${uri//:/\\\\:}:c=${settings// /|}" -c:a pcm_f32le other.wav
  same ours.wav other.wav "FFmpeg differs at $settings"
  gst-launch-1.0 -q filesrc location=in.wav ! wavparse ! audioconvert ! "${uri//:/-}" \
    $(named_by_gstreamer $settings) ! audio/x-raw,format=F32LE ! wavenc ! filesink location=other.wav
  same ours.wav other.wav "GStreamer differs at $settings"
done <<'SETTINGS'
mix=1
delay_left=0.1 delay_right=0.15 mix=0.5 feedback=0.8 wobble=0.4 wobble_morph=0.6 noise=0.3 noise_morph=0.2
delay_left=0.004 delay_right=0.003 repitch=1 fbinvert=1 mod_waveform=1 mod_freq=0.4 mod_delay=0.5 mod_mult=1 mix=0.6
channel_mode=1 delay_left=0.2 delay_right=0.2 reverb=0.6 reverb_location=2 reverb_decay=0.8 duck=1 duck_threshold=-30
channel_mode=2 delay_left=0.12 delay_right=0.07 gate=1 gate_threshold=-20 input=12 clip=1 width=1.7 drywetmode=1 mix=0.4
SETTINGS

while read -r title; do
  name=$(grep -l "^# *$title:" "$presets"/*.txt)
  lv2file --ignore-clipping -b 37 -P "$title" -i in.wav -o ours.wav $uri >/dev/null
  render rendered.wav --preset "$name"
  same ours.wav rendered.wav "the preset $title differs between lv2file and the renderer"
done <titles

seconds=$(lv2bench -b 64 -n 480000 $uri | sed -n "s/ $uri//p")
[ -n "$seconds" ] || fail "lv2bench did not run it"
echo "hosts: all agree; lv2bench: $seconds s for 480000 frames"
