#!/usr/bin/env bash
# The sbatch profile's slurm-status on every Slurm state, from stand-in sacct and scontrol:
# done, running or failed as Snakemake must hear it, from sacct, and from scontrol where the
# cluster keeps no accounting; a job Slurm forgot is left to Snakemake's output check, and an
# unreachable controller means asking again.
#   slurm_status.sh STATUS_SCRIPT
set -euo pipefail
status=$1
bin=$(mktemp -d "${TMPDIR:-/tmp}/slurm_status_test.XXXXXX")
trap 'rm -rf "$bin"' EXIT
failed=0
# expect ANSWER SACCT_OUTPUT SACCT_STATUS SCONTROL_OUTPUT SCONTROL_STATUS
expect() {
  printf '#!/bin/sh\nprintf "%%s\\n" "%s"\nexit %s\n' "$2" "$3" >"$bin/sacct"
  printf '#!/bin/sh\nprintf "%%s\\n" "%s"\nexit %s\n' "$4" "$5" >"$bin/scontrol"
  chmod +x "$bin/sacct" "$bin/scontrol"
  local answer
  answer=$(PATH=$bin:$PATH "$status" 42)
  if [[ $answer != "$1" ]]; then
    echo "FAILED: sacct '$2' ($3), scontrol '$4' ($5): '$answer', not '$1'"
    failed=1
  fi
}
for state in COMPLETED; do expect success "$state" 0 "" 1; done
for state in PENDING CONFIGURING RUNNING COMPLETING SUSPENDED REQUEUED; do
  expect running "$state" 0 "" 1
done
for state in TIMEOUT OUT_OF_MEMORY NODE_FAIL "CANCELLED by 0" PREEMPTED BOOT_FAIL DEADLINE FAILED; do
  expect failed "$state" 0 "" 1
  expect failed "Slurm accounting storage is disabled" 1 \
    "JobId=42 JobName=batch-00003 JobState=${state%% *} Reason=None" 0
done
expect success "" 1 "JobId=42 JobName=batch-00003 JobState=COMPLETED Reason=None" 0
expect running "" 1 "JobId=42 JobName=batch-00003 JobState=RUNNING Reason=None" 0
expect success "" 1 "slurm_load_jobs error: Invalid job id specified" 1
expect running "" 1 "slurm_load_jobs error: Unable to contact slurm controller" 1
((failed == 0)) || exit 1
echo "slurm-status: every state answered as expected"
