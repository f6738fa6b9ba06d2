#!/usr/bin/env bash
# Crystals per second of the many-crystals workflow against a plain shell loop over the same
# crystal directories (check, then the job where the check finds nothing that stops it), with
# a warm page cache.
#   bench/many_crystals.sh BIN_DIR DATA_DIR [CRYSTALS] [RUNS] [PER_JOB...]
# BIN_DIR holds check_inter_ener and get_inter_ener; DATA_DIR/campaign-CRYSTALS (default 1000)
# is generated once and kept. RUNS (default 3) alternating runs of the loop and of the
# workflow with each PER_JOB value (crystals per Snakemake job; default 100 and 1); medians.
set -euo pipefail
bin=$(cd "$1" && pwd) data=$2 crystals=${3:-1000} runs=${4:-3}
shift $(($# < 4 ? $# : 4))
per_job=("${@:-100}")
[[ $# -gt 0 ]] || per_job=(100 1)
workflow=$(cd "$(dirname "$0")/../workflows/many-crystals" && pwd)
campaign=$data/campaign-$crystals
if [[ ! -d $campaign/crystals ]]; then
  mkdir -p "$data"
  rm -rf "$campaign.part"
  python3 "$workflow/make_campaign.py" "$campaign.part/crystals" "$crystals" --seed 1
  mv "$campaign.part" "$campaign"
fi
cd "$campaign"

now() { date +%s.%N; }

shell_loop() {
  rm -rf loop && mkdir loop
  for dir in crystals/*/; do
    name=$(basename "$dir")
    status=0
    (cd "$dir" && "$bin/check_inter_ener" -batch int_ener_files.dat -neighbor -json) \
      >"loop/$name.json" || status=$?
    if ((status < 2)); then
      (cd "$dir" && "$bin/get_inter_ener" -batch int_ener_files.dat -neighbor) \
        >"loop/$name.run.txt" 2>&1 || true
    fi
  done
}

workflow_run() {
  rm -rf results
  snakemake --snakefile "$workflow/Snakefile" --cores 2 --quiet --config \
    check_inter_ener="$bin/check_inter_ener" get_inter_ener="$bin/get_inter_ener" \
    crystals_per_job="$1" >snakemake.log 2>&1 || { cat snakemake.log; exit 1; }
}

# Seconds of one run of "$@".
timed() {
  local start
  start=$(now)
  "$@"
  awk -v a="$(now)" -v b="$start" 'BEGIN {printf "%.3f", a - b}'
}

median() { printf '%s\n' "$@" | sort -g | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

report() {
  local label=$1
  shift
  local m
  m=$(median "$@")
  printf '%-32s median %7.2f s  %7.1f crystals/s  (runs: %s)\n' "$label" "$m" \
    "$(awk -v n="$crystals" -v t="$m" 'BEGIN {print n / t}')" "$*"
}

shell_loop # warms the page cache
loop_times=()
declare -A workflow_times
for ((r = 0; r < runs; r++)); do
  loop_times+=("$(timed shell_loop)")
  for n in "${per_job[@]}"; do workflow_times[$n]+="$(timed workflow_run "$n") "; done
done
echo "campaign of $crystals crystals in $campaign, $runs runs each, page cache warm:"
report "shell loop (check, then job)" "${loop_times[@]}"
for n in "${per_job[@]}"; do
  # shellcheck disable=SC2086
  report "workflow, $n crystal(s) a job" ${workflow_times[$n]}
done
