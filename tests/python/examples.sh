#!/usr/bin/env bash
# The examples for more than one machine, on this one: one worker and four, one job and many, give
# the same bytes; what can't be played fails alone.
#
#   examples.sh EXAMPLES PYTHON-FOLDER VESK PYTHON
#
# Exit 77: a package is missing, and nothing was tested.
set -euo pipefail
examples=$1 vesk=$3 python=$4
export PYTHONPATH=$2 PATH=$(dirname "$3"):$PATH
"$python" -c 'import dask.distributed, soundfile' 2>/dev/null ||
  { echo "examples: not run, dask or soundfile is missing" >&2; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "examples: $*" >&2; exit 1; }

mkdir -p "$work/in/of a kind"
"$python" - "$work/in" <<'PYTHON'
import sys, numpy, soundfile
for i in range(6):
    sound = numpy.random.default_rng(i).uniform(-0.3, 0.3, (3000, 1 + i % 2))
    soundfile.write(f"{sys.argv[1]}/{'of a kind/' if i > 3 else ''}{i}.flac", sound, 22050)
PYTHON
for workers in 1 4; do
  "$python" "$examples/augment_dask.py" "$work/in" "$work/by$workers" --variants 2 \
    --workers "$workers" >"$work/said" 2>&1 || { cat "$work/said" >&2; fail "dask with $workers"; }
done
[ "$(find "$work/by1" -name '*.wav' | wc -l)" = 12 ] || fail "not twelve files"
diff -r "$work/by1" "$work/by4" || fail "one worker and four differ"
echo damaged >"$work/in/9.wav"
! "$python" "$examples/augment_dask.py" "$work/in" "$work/again" >"$work/said" 2>&1 || fail "exit 0"
grep -q '9\.wav: ' "$work/said" && grep -q '^6 files written, 1 failed' "$work/said" ||
  { cat "$work/said" >&2; fail "the damaged file was not told"; }
rm "$work/in/9.wav"

# As the jobs of an array run.
for jobs in 6 2; do
  mkdir -p "$work/jobs$jobs"
  find "$work/in" -name '*.flac' | sort | while read -r file; do
    printf '%s\t%s\tdelay=0.05\tfeedback=0.7\n' "$file" "$work/jobs$jobs/$(basename "$file" .flac).wav"
  done >"$work/list$jobs"
  for ((job = 0; job * jobs < 6; ++job)); do
    SLURM_ARRAY_TASK_ID=$job "$examples/slurm-array.sh" "$work/list$jobs" "$jobs" >>"$work/said" 2>&1 ||
      { cat "$work/said" >&2; fail "slurm job $job"; }
  done
done
[ "$(ls "$work/jobs2" | wc -l)" = 6 ] || fail "not six files"
diff -r "$work/jobs6" "$work/jobs2" || fail "one job and three differ"
