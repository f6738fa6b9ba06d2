#!/bin/sh
# Runs the many-crystals workflow on a generated campaign with two cores and compares its
# table with the one the generator computed from the energies it wrote, byte for byte; then
# again with a check program that is missing.
#   many_crystals.sh WORKFLOW_DIR CHECK_PROGRAM JOB_PROGRAM
# Status 77 (skipped) when snakemake is not installed.
set -eu
workflow=$1 check=$2 job=$3
if ! command -v snakemake >/dev/null 2>&1; then
  echo "skipped: snakemake is not installed (apt-get install snakemake)"
  exit 77
fi
dir=$(mktemp -d "${TMPDIR:-/tmp}/many_crystals_test.XXXXXX")
trap 'rm -rf "$dir"' EXIT
cd "$dir"
python3 "$workflow/make_campaign.py" crystals 60 --seed 15 --expected expected.csv
# Eight crystals a job, so that the two cores share several jobs.
snakemake --snakefile "$workflow/Snakefile" --cores 2 --quiet \
  --config check_inter_ener="$check" get_inter_ener="$job" crystals_per_job=8 >snakemake.log 2>&1 ||
  { cat snakemake.log; exit 1; }
diff expected.csv results/crystals.csv
echo "the workflow's table of 60 crystals equals the expected one"

# A check program that cannot be started: every crystal keeps its row, skipped, and the
# workflow still succeeds.
snakemake --snakefile "$workflow/Snakefile" --cores 2 --quiet \
  --config check_inter_ener="$dir/absent" get_inter_ener="$job" results=absent >>snakemake.log 2>&1 ||
  { cat snakemake.log; exit 1; }
skipped=$(grep -c ",127,,skipped,no report from check_inter_ener (status 127): .*absent" \
  absent/crystals.csv) || true
[ "$skipped" = 60 ] || { echo "$skipped of 60 rows skipped without a check:"; cat absent/crystals.csv; exit 1; }
echo "without a check program, all 60 crystals are skipped and the workflow succeeds"
