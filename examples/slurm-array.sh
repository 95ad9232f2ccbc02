#!/usr/bin/env bash
# Renders a list of files as jobs of a Slurm cluster, a part of the list each. The list is that of
# `vesk render --list`: INPUT, tab, OUTPUT [, tab, SETTINGS] a line.
#
#   slurm-array.sh LIST [LINES-A-JOB]      submits; 2000 lines take about ten seconds a core
#
# A job that is run again skips what is done. Needs vesk in PATH, where the jobs run, too.
set -euo pipefail

list=$(realpath "${1:?usage: slurm-array.sh LIST [LINES-A-JOB]}")
per_job=${2:-2000}
if [ -z "${SLURM_ARRAY_TASK_ID:-}" ]; then
  lines=$(wc -l <"$list")
  [ "$lines" -gt 0 ] || { echo "slurm-array: $list: is empty" >&2; exit 2; }
  exec sbatch --array="0-$(((lines - 1) / per_job))" --cpus-per-task="${CPUS:-2}" \
    "$(realpath "$0")" "$list" "$per_job"
fi
first=$((SLURM_ARRAY_TASK_ID * per_job + 1))
sed -n "$first,$((first + per_job - 1))p" "$list" |
  vesk render --list - --jobs "${SLURM_CPUS_PER_TASK:-1}" --skip-existing --json
