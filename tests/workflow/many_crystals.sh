#!/usr/bin/env bash
# The many-crystals workflow through its local profile with two cores, on a generated campaign
# with crystals of awkward names and one that blocks, its table compared byte for byte with the
# one the generator computed:
#   1. a fresh campaign;
#   2. one output replaced: the same command redoes one batch and gives a fresh run's table;
#   3. killed by SIGKILL, SIGINT and SIGTERM at several points: the same command completes it;
#   4. the program missing: the campaign fails and names it.
#   many_crystals.sh WORKFLOW_DIR SITE_ENERGIES
# Status 77 (skipped) when snakemake or python3-matplotlib is not installed.
set -euo pipefail
workflow=$1 program=$2
if ! command -v snakemake >/dev/null 2>&1; then
  echo "skipped: snakemake is not installed (apt-get install snakemake)"
  exit 77
fi
# The figures are drawn by the Python Snakemake runs on.
if ! "$(sed -n '1s/^#! *//p' "$(command -v snakemake)")" -c 'import matplotlib' 2>/dev/null; then
  echo "skipped: python3-matplotlib is not installed (apt-get install python3-matplotlib)"
  exit 77
fi
dir=$(mktemp -d "${TMPDIR:-/tmp}/many_crystals_test.XXXXXX")
campaign_pid=
cleanup() {
  [[ -z $campaign_pid ]] || kill -KILL -- "-$campaign_pid" 2>/dev/null || true
  rm -rf "$dir"
}
trap cleanup EXIT
cd "$dir"
fail() {
  echo "FAILED: $*"
  exit 1
}

python3 "$workflow/make_campaign.py" crystals 60 --seed 15 --expected generated.csv
# Every name a file system allows is a crystal like any other: copies of a clean crystal under
# names that are options, outside UTF-8, 255 bytes long, or hold a newline, a comma, a quote.
clean=$(grep -m1 ',written,yes,' generated.csv | cut -d, -f1)
long=$(printf 'L%.0s' {1..255})
names=(-dash --root $'\xff\xfe-latin' "$long" $'new\nline' 'comma, "quoted" and spaced')
for name in "${names[@]}"; do cp -r "crystals/$clean" "crystals/$name"; done
# A crystal whose output is a FIFO that nobody writes: it blocks until its time limit.
cp -r "crystals/$clean" crystals/fifo-blocked
rm crystals/fifo-blocked/site1_neutral.log
mkfifo crystals/fifo-blocked/site1_neutral.log
python3 - "$workflow" "$clean" generated.csv expected.csv "${names[@]}" <<'EOF'
import sys
sys.path.insert(0, sys.argv[1])
import campaign_table
clean, generated, expected, names = sys.argv[2], sys.argv[3], sys.argv[4], sys.argv[5:]
rows = campaign_table.read_table(generated)
model = next(r for r in rows if r["crystal"] == clean)
rows += [dict(model, crystal=campaign_table.display_name(n)) for n in names]
rows.append(campaign_table.failed_row("fifo-blocked", "timed-out",
                                      "no result within 2 s: site_energies stopped"))
campaign_table.write_table(expected, sorted(rows, key=lambda r: r["crystal"]))
EOF

# The rows of a table (a name may hold a newline).
count_rows() { python3 -c 'import csv, sys; print(sum(1 for _ in csv.DictReader(open(sys.argv[1]))))' "$1"; }

# The command of the README, with the built program and small batches.
campaign() {
  snakemake --snakefile "$workflow/Snakefile" --profile "$workflow/profiles/local" --cores 2 \
    --config site_energies="$program" crystals_per_job=8 crystal_time_limit=2 "$@"
}

# 1. A fresh campaign.
campaign >run.log 2>&1 || { cat run.log; fail "the campaign failed"; }
diff expected.csv results/crystals.csv || fail "the table differs from the expected one"
echo "a campaign of $(count_rows expected.csv) rows gives the expected table"

# The summary counts the rows, and the disorder figure shows the trusted ones.
rows=$(count_rows expected.csv) trusted=$(grep -c ',written,yes,' expected.csv)
grep -qx "crystals: $rows" results/summary.txt &&
  grep -qx "written: $trusted (trusted $trusted, untrusted 0)" results/summary.txt &&
  grep -q "^disorder of the $trusted trusted crystals" results/summary.txt ||
  { cat results/summary.txt; fail "the summary does not count the table"; }
python3 - "$workflow" <<'END' || fail "the disorder figure's data are not the trusted rows"
import csv, sys
sys.path.insert(0, sys.argv[1])
import campaign_table
keys = ["crystal", "hole_sigma_site_meV", "electron_sigma_site_meV"]
table = [[r[k] for k in keys] for r in campaign_table.read_table("results/crystals.csv")
         if r["trusted"] == "yes"]
with open("results/figures/disorder.csv", newline="") as source:
    sys.exit(list(csv.reader(source)) != [keys] + table)
END

# A crystal's diagram on request: a site row per site of its table row.
campaign -- "results/figures/$clean.png" >figure.log 2>&1 || { cat figure.log; fail "no diagram"; }
sites=$(grep -c '^site,' "results/figures/$clean.csv" || true)
[[ -s results/figures/$clean.png && -s results/figures/$clean.svg ]] &&
  grep -q "^$clean,written,yes,.*,$sites,[0-9]*,[^,]*,[^,]*,[^,]*,[^,]*,$sites,[0-9]*\$" \
    results/crystals.csv || fail "the diagram of $clean does not show its $sites sites"

# 2. One output replaced by that of another site, then a crystal removed and one added: each
# time at most the batches concerned are redone, and the table is a fresh run's.
rerun() {
  campaign >rerun.log 2>&1 || { cat rerun.log; fail "the rerun failed"; }
  rm -rf fresh
  campaign --config results=fresh site_energies="$program" crystals_per_job=8 \
    crystal_time_limit=2 >fresh.log 2>&1 || { cat fresh.log; fail "the fresh run failed"; }
  diff fresh/crystals.csv results/crystals.csv || fail "the rerun's table is stale"
  batches=$(grep -c '^rule batch:' rerun.log || true)
  ((batches >= 1 && batches <= $1)) || fail "$batches batches redone, not 1 to $1"
}
cp "crystals/$clean/site2_cation.log" "crystals/$clean/site1_cation.log"
rerun 1
cmp -s expected.csv results/crystals.csv && fail "the replaced output changed nothing"
rm -r crystals/comma*
cp -r "crystals/$clean" crystals/added
rerun 2
echo "after an output is replaced, a crystal removed and one added, the table is a fresh run's"

# 3. Interrupted: the campaign in its own process group, killed whole (as by Ctrl-C or a node
# that dies) once COUNT batches are done, then run again as it was: the table must be the
# uninterrupted run's.
interrupt() {
  local signal=$1 count=$2 results=interrupted-$1-$2
  # A process group of its own, with SIGINT heard (a shell's background jobs ignore it).
  python3 -c 'import os, signal, sys
signal.signal(signal.SIGINT, signal.SIG_DFL)
os.setsid()
os.execvp(sys.argv[1], sys.argv[1:])' snakemake --snakefile "$workflow/Snakefile" \
    --profile "$workflow/profiles/local" --cores 2 --config site_energies="$program" \
    crystals_per_job=8 crystal_time_limit=2 results="$results" >"$results.log" 2>&1 &
  campaign_pid=$!
  # The group exists once setsid() has run.
  until kill -0 -- "-$campaign_pid" 2>/dev/null; do sleep 0.01; done
  for ((tick = 0; tick < 200; tick++)); do
    done_batches=$(ls "$results/batches" 2>/dev/null | grep -c '[0-9]\.csv$' || true)
    ((done_batches < count)) || break
    sleep 0.05
  done
  kill "-$signal" -- "-$campaign_pid" 2>/dev/null || true
  # Snakemake 7 now and then hangs on SIGTERM (a lock its threads wait on): killed after 20 s,
  # an interruption still.
  for ((tick = 0; tick < 200; tick++)); do
    kill -0 "$campaign_pid" 2>/dev/null || break
    sleep 0.1
  done
  kill -KILL -- "-$campaign_pid" 2>/dev/null && echo "SIG$signal: Snakemake still ran 20 s after it"
  { wait "$campaign_pid" || true; } 2>/dev/null
  campaign_pid=
  [[ ! -e $results/crystals.csv ]] || fail "SIG$signal came after the campaign ended"
  campaign --config results="$results" site_energies="$program" crystals_per_job=8 \
    crystal_time_limit=2 >>"$results.log" 2>&1 || { cat "$results.log"; fail "not completed after SIG$signal"; }
  diff fresh/crystals.csv "$results/crystals.csv" || fail "another table after SIG$signal"
}
interrupt KILL 0
interrupt KILL 2
interrupt INT 1
interrupt TERM 3
echo "killed by SIGKILL, SIGINT or SIGTERM, the same command completes the campaign"

# 4. A program that cannot be found fails the campaign, and the message names it.
if campaign --config site_energies="$dir/absent" results=absent >absent.log 2>&1; then
  fail "the campaign succeeded without its program"
fi
grep -q "program not found: $dir/absent" absent.log || { cat absent.log; fail "no message"; }
[[ ! -e absent/crystals.csv ]] || fail "a table was written without the program"
echo "without its program, the campaign fails and names it"
