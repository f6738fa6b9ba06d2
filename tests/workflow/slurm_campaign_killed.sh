#!/usr/bin/env bash
# slurm_campaign.sh killed by SIGKILL while a batch job runs, as a time-out kills a test: within
# 10 s no process of it may be left (munged, slurmctld, slurmd, slurmstepd, the jobs,
# Snakemake), a process of it being one whose working folder or an open file lies in the
# temporary folder it is given. Those left are named, then killed by their process ids.
#   slurm_campaign_killed.sh SLURM_CAMPAIGN_SH WORKFLOW_DIR SITE_ENERGIES
# Status 77 (skipped) when slurm_campaign.sh is skipped.
set -euo pipefail
test_script=$1
shift
tmp=$(mktemp -d "${TMPDIR:-/tmp}/slurm_campaign_killed.XXXXXX")
# munged, as user munge, must reach its socket inside.
chmod 755 "$tmp"
# The process ids of the test's processes (find fails on those that end meanwhile).
processes() {
  { find /proc/[0-9]*/cwd /proc/[0-9]*/fd -maxdepth 1 -lname "$tmp/*" 2>/dev/null || true; } |
    cut -d/ -f3 | sort -un
}
# Kills the test's processes left, by their ids, until there are none (one may be starting).
cleanup() {
  for ((round = 0; round < 50; round++)); do
    left=$(processes)
    [[ -n $left ]] || break
    # shellcheck disable=SC2086
    kill -KILL $left 2>/dev/null || true
    sleep 0.1
  done
  rm -rf "$tmp"
}
trap cleanup EXIT

# The test dies with this script, even by SIGKILL.
TMPDIR=$tmp setpriv --pdeathsig KILL bash "$test_script" "$@" >"$tmp/test.log" 2>&1 &
outer=$!
for ((tick = 0; tick < 1200; tick++)); do
  if ! kill -0 "$outer" 2>/dev/null; then
    status=0
    wait "$outer" || status=$?
    cat "$tmp/test.log"
    ((status == 77)) && exit 77
    echo "FAILED: the test ended (status $status) before any batch job ran"
    exit 1
  fi
  conf=$(echo "$tmp"/slurm_campaign_test.*/slurm.conf)
  [[ -e $conf && -n $(SLURM_CONF=$conf squeue --noheader --states=RUNNING 2>/dev/null) ]] && break
  sleep 0.1
done
((tick < 1200)) || { cat "$tmp/test.log"; echo "FAILED: no batch job ran within 120 s"; exit 1; }
# The job's processes start.
sleep 1
kill -KILL "$outer"
wait "$outer" 2>/dev/null || true
for ((tick = 0; tick < 100; tick++)); do
  left=$(processes)
  [[ -n $left ]] || break
  sleep 0.1
done
if [[ -n $left ]]; then
  for pid in $left; do
    echo "left: $pid $(tr '\0' ' ' <"/proc/$pid/cmdline" 2>/dev/null)"
  done
  echo "FAILED: processes of the test killed 10 s ago are left"
  exit 1
fi
echo "killed while a batch job ran; none of its processes is left"
