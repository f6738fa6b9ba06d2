#!/usr/bin/env bash
# The many-crystals workflow at scale: a generated campaign (kept once made), run through the
# local profile on 2 cores with a warm page cache.
#   bench/many_crystals.sh BIN_DIR DATA_DIR [CRYSTALS] [RUNS] [PER_JOB] [GOAL]
# BIN_DIR holds site_energies; DATA_DIR/campaign-CRYSTALS (default 100000) is generated once,
# unless it is there (the real-size crystals of bench/real_size_data.sh).
# Each of RUNS (default 3) runs times, from a campaign without results:
#   - the jobs built (a dry run: the crystals scanned, the manifests written, the DAG built);
#   - the whole campaign, end to end (the same, then every batch, the table and the figure);
#   - the same command again, with nothing to do.
# PER_JOB sets crystals_per_job (default: the workflow's). Medians; the goals are a DAG built in
# at most 60 s and at least GOAL (default 1000) crystals a second end to end. Status 1 when one
# is missed.
set -euo pipefail
bin=$(cd "$1" && pwd) data=$2 crystals=${3:-100000} runs=${4:-3} per_job=${5:-} goal=${6:-1000}
workflow=$(cd "$(dirname "$0")/../workflows/many-crystals" && pwd)
campaign=$data/campaign-$crystals
if [[ ! -d $campaign/crystals ]]; then
  mkdir -p "$data"
  rm -rf "$campaign.part"
  echo "generating $crystals crystals in $campaign"
  python3 "$workflow/make_campaign.py" "$campaign.part/crystals" "$crystals" --seed 1
  mv "$campaign.part" "$campaign"
fi
cd "$campaign"

config=(site_energies="$bin/site_energies")
[[ -z $per_job ]] || config+=(crystals_per_job="$per_job")
campaign() {
  snakemake --snakefile "$workflow/Snakefile" --profile "$workflow/profiles/local" --cores 2 \
    --quiet --config "${config[@]}" "$@" >snakemake.log 2>&1 || { cat snakemake.log; exit 1; }
}

# Seconds of one run of "$@".
timed() {
  local start
  start=$(date +%s.%N)
  "$@"
  awk -v a="$(date +%s.%N)" -v b="$start" 'BEGIN {printf "%.2f", a - b}'
}

median() { printf '%s\n' "$@" | sort -g | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

campaign # warms the page cache, and writes every crystal's tables once
dag=() whole=() nothing=()
for ((r = 0; r < runs; r++)); do
  rm -rf results .snakemake
  dag+=("$(timed campaign --dry-run)")
  rm -rf results .snakemake
  whole+=("$(timed campaign)")
  nothing+=("$(timed campaign)")
done
dag_median=$(median "${dag[@]}") whole_median=$(median "${whole[@]}")
rate=$(awk -v n="$crystals" -v t="$whole_median" 'BEGIN {printf "%.0f", n / t}')
echo "campaign of $crystals crystals in $campaign, 2 cores, $runs runs, page cache warm:"
echo "  jobs built (dry run)      median ${dag_median} s (runs: ${dag[*]}); goal at most 60 s"
echo "  whole campaign            median ${whole_median} s (runs: ${whole[*]}): $rate crystals/s; goal at least $goal"
echo "  again, nothing to do      median $(median "${nothing[@]}") s (runs: ${nothing[*]})"
awk -v d="$dag_median" -v r="$rate" -v g="$goal" 'BEGIN {exit !(d <= 60 && r >= g)}' ||
  { echo "a goal is missed"; exit 1; }
