#!/usr/bin/env bash
# The many-crystals workflow on a one-node Slurm cluster that the test starts on 127.0.0.1 (its
# own configuration, ports, state, munge key and socket, all in a temporary folder): a
# generated campaign of 200 crystals, broken ones among them, through each Slurm profile, with
# USER unset. For each profile one running batch job is cancelled mid-campaign: the campaign
# must fail, and the same command must then redo that batch alone and write the table expected,
# byte for byte. The test runs in a PID namespace of its own, as its first process: however it
# ends, SIGKILL included, the kernel then kills every process left in it, daemons and jobs alike.
#   slurm_campaign.sh WORKFLOW_DIR SITE_ENERGIES
# Status 77 (skipped), saying why, when not root, when Slurm, munge or Snakemake is missing, or
# when unshare cannot make a PID namespace.
set -euo pipefail
workflow=$1 program=$2
skip() {
  echo "skipped: $*"
  exit 77
}
((EUID == 0)) || skip "the Slurm daemons need root"
for command in slurmctld slurmd munged sbatch sinfo squeue scontrol scancel setpriv snakemake; do
  command -v "$command" >/dev/null 2>&1 ||
    skip "$command is not installed (apt-get install slurmctld slurmd slurm-client munge snakemake)"
done
id munge >/dev/null 2>&1 || skip "there is no user munge (apt-get install munge)"
python=$(sed -n '1s/^#! *//p' "$(command -v snakemake)")
"$python" -c 'import matplotlib' 2>/dev/null ||
  skip "python3-matplotlib is not installed (apt-get install python3-matplotlib)"

# The script again as the first process of a new PID namespace, with its own /proc (which
# slurmd reads for a job's processes); --kill-child: that process dies with unshare, even by
# SIGKILL, and the namespace with it.
if (($$ != 1)) || [[ -z ${SLURM_CAMPAIGN_NAMESPACE:-} ]]; then
  namespace=(unshare --pid --fork --kill-child --mount-proc)
  error=$("${namespace[@]}" true 2>&1) || skip "unshare cannot make a PID namespace: $error"
  SLURM_CAMPAIGN_NAMESPACE=1 exec "${namespace[@]}" "$BASH" "$0" "$@"
fi
unset SLURM_CAMPAIGN_NAMESPACE
# A namespace's first process ignores the signals it does not handle; these end the test as
# they would elsewhere (unshare, the process started, holds SIGINT and SIGTERM while it waits:
# Ctrl-C reaches the whole process group, this one too).
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

dir=$(mktemp -d "${TMPDIR:-/tmp}/slurm_campaign_test.XXXXXX")
# munged, as user munge, must reach its socket inside.
chmod 755 "$dir"
started=$EPOCHREALTIME
# Seconds since START (an $EPOCHREALTIME), with DIGITS decimals (none unless given).
seconds_since() {
  awk -v s="$1" -v n="$EPOCHREALTIME" -v d="${2:-0}" 'BEGIN { printf "%." d "f", n - s }'
}
# On exit: every other process of the namespace (the daemons, the jobs, Snakemake), then the
# folder they wrote in. Only as the namespace's first process: elsewhere, -1 is every process of
# the machine.
cleanup() {
  (($$ != 1)) || kill -KILL -- -1 2>/dev/null || true
  wait 2>/dev/null
  rm -rf "$dir"
}
trap cleanup EXIT
fail() {
  echo "FAILED: $*"
  exit 1
}

# A one-node cluster: this machine, under the name slurmd gives it, with its CPUs and memory;
# no accounting (Snakemake then asks scontrol, which knows a job MinJobAge seconds after its
# end).
mkdir -p "$dir"/munge "$dir"/munge-key "$dir"/state "$dir"/spool "$dir"/log
chown munge:munge "$dir/munge" "$dir/munge-key"
chmod 755 "$dir/munge"
chmod 700 "$dir/munge-key"
head -c 1024 /dev/urandom >"$dir/munge-key/munge.key"
chown munge:munge "$dir/munge-key/munge.key"
chmod 600 "$dir/munge-key/munge.key"
read -r node cpus memory < <(slurmd -C | sed -n '1s/^NodeName=\([^ ]*\) CPUs=\([0-9]*\) .*RealMemory=\([0-9]*\).*/\1 \2 \3/p')
[[ -n ${memory:-} ]] || fail "slurmd -C gave no node: $(slurmd -C)"
read -r controller_port node_port < <("$python" -c 'import socket
sockets = [socket.socket() for _ in range(2)]
for s in sockets:
    s.bind(("127.0.0.1", 0))
print(*(s.getsockname()[1] for s in sockets))')
cat >"$dir/slurm.conf" <<EOF
ClusterName=campaign-test
SlurmctldHost=$node(127.0.0.1)
SlurmctldPort=$controller_port
SlurmdPort=$node_port
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$dir/munge/munge.socket
StateSaveLocation=$dir/state
SlurmdSpoolDir=$dir/spool
SlurmctldPidFile=$dir/slurmctld.pid
SlurmdPidFile=$dir/slurmd.pid
SlurmctldLogFile=$dir/log/slurmctld.log
SlurmdLogFile=$dir/log/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
MpiDefault=none
SwitchType=switch/none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
ReturnToService=2
MinJobAge=600
NodeName=$node NodeAddr=127.0.0.1 CPUs=$cpus RealMemory=$memory State=UNKNOWN
PartitionName=campaign Nodes=$node Default=YES MaxTime=INFINITE State=UP
PartitionName=chemistry Nodes=$node Default=NO MaxTime=INFINITE State=UP
EOF
export SLURM_CONF=$dir/slurm.conf

setpriv --reuid=munge --regid=munge --init-groups munged --foreground \
  --key-file="$dir/munge-key/munge.key" --socket="$dir/munge/munge.socket" \
  --pid-file="$dir/munge/munged.pid" --seed-file="$dir/munge/munged.seed" \
  --log-file="$dir/log/munged.log" >"$dir/log/munged.out" 2>&1 &
munged_pid=$!
for ((tick = 0; tick < 100; tick++)); do
  [[ -S $dir/munge/munge.socket ]] && break
  kill -0 "$munged_pid" 2>/dev/null || { cat "$dir/log/munged.out"; fail "munged ended"; }
  sleep 0.1
done
[[ -S $dir/munge/munge.socket ]] || fail "munged made no socket in 10 s"
slurmctld -D -i >"$dir/log/slurmctld.out" 2>&1 &
slurmd -D >"$dir/log/slurmd.out" 2>&1 &
state=
for ((tick = 0; tick < 300; tick++)); do
  state=$(sinfo --noheader --format=%T 2>/dev/null || true)
  [[ $state != idle ]] || break
  sleep 0.1
done
[[ $state == idle ]] || {
  tail -n 20 "$dir"/log/*
  fail "the node is not idle after 30 s (sinfo: ${state:-nothing})"
}
echo "a one-node Slurm cluster on 127.0.0.1 after $(seconds_since "$started" 1) s"

cd "$dir"
"$python" "$workflow/make_campaign.py" crystals 200 --seed 23 --expected expected.csv
# The test's settings: the built program, 25 crystals a batch (8 batch jobs), and the
# partition that is not the cluster's default, which every job must then be in.
slurm_settings=(site_energies="$program" crystals_per_job=25 slurm_partition=chemistry)

# The campaign through PROFILE (as doc/workflow.md gives it, with the test's settings), into
# RESULTS, with USER unset as in a cron job: the command, in the array campaign_args.
campaign_command() {
  campaign_args=(env -u USER snakemake --snakefile "$workflow/Snakefile"
    --profile "$workflow/profiles/$1" --config "${slurm_settings[@]}" results="$2")
}

# Runs the campaign through PROFILE into RESULTS.
campaign() {
  campaign_command "$1" "$2"
  "${campaign_args[@]}"
}

# The same, in the background, in a session of its own (as a terminal's foreground job is in a
# process group of its own) and heeding SIGINT (which bash ignores in background jobs), writing
# LOG; its process id in campaign_pid.
start_campaign() {
  campaign_command "$1" "$2"
  "$python" -c 'import os, signal, sys
os.setsid()
signal.signal(signal.SIGINT, signal.SIG_DFL)
os.execvp(sys.argv[1], sys.argv[1:])' "${campaign_args[@]}" >"$3" 2>&1 &
  campaign_pid=$!
}

profiles_done=0
for profile in slurm slurm-sbatch; do
  results=results-$profile
  mkdir "$profile"
  cd "$profile"
  cp -r ../crystals .
  # 1. Cancelled mid-campaign: one running batch job, cancelled once, fails the campaign.
  run_started=$EPOCHREALTIME
  start_campaign "$profile" "$results" cancelled.log
  cancelled=
  for ((tick = 0; tick < 600; tick++)); do
    for job in $(squeue --noheader --states=RUNNING --format=%i); do
      scancel "$job"
      for ((wait_tick = 0; wait_tick < 50; wait_tick++)); do
        job_state=$(scontrol --oneliner show job "$job" | grep -o 'JobState=[A-Z_]*')
        [[ $job_state == JobState=COMPLETING || $job_state == JobState=RUNNING ]] || break
        sleep 0.1
      done
      # A job that ended just before scancel reached it is not the one.
      if [[ $job_state == JobState=CANCELLED ]]; then
        cancelled=$job
        break
      fi
    done
    [[ -z $cancelled ]] || break
    sleep 0.1
  done
  [[ -n $cancelled ]] || fail "$profile: no running batch job was cancelled within 60 s"
  status=0
  wait "$campaign_pid" || status=$?
  ((status != 0)) || { cat cancelled.log; fail "$profile: the campaign succeeded with job $cancelled cancelled"; }
  [[ ! -e $results/crystals.csv ]] || fail "$profile: a table despite job $cancelled cancelled"
  grep -Eq "SLURM-job '$cancelled' failed|external: $cancelled," cancelled.log || { cat cancelled.log; fail "$profile: job $cancelled not in the log"; }
  batches=$(ls "$results/batches" | grep -c '^[0-9]*\.csv$' || true)
  ((batches == 7)) || fail "$profile: $batches batches done besides the cancelled one, not 7"
  first=$(seconds_since "$run_started")

  # 2. The same command redoes the cancelled batch alone and gives the expected table.
  run_started=$EPOCHREALTIME
  campaign "$profile" "$results" >completed.log 2>&1 || { cat completed.log; fail "$profile: not completed"; }
  second=$(seconds_since "$run_started")
  redone=$(grep -c '^rule batch:' completed.log || true)
  ((redone == 1)) || fail "$profile: $redone batches redone after job $cancelled was cancelled, not 1"
  diff ../expected.csv "$results/crystals.csv" || fail "$profile: the table differs from the expected one"

  # The batches ran as Slurm jobs: one log each, where each profile puts them.
  case $profile in
    slurm) logs=(.snakemake/slurm_logs/rule_batch/*.log) ;;
    slurm-sbatch) logs=(slurm-logs/batch-*.log) ;;
  esac
  ((${#logs[@]} == 9)) || fail "$profile: ${#logs[@]} Slurm job logs, not 8 jobs and the redone one"
  # Slurm knows every job of the test (MinJobAge), 9 a profile, each in the partition given.
  jobs=$(scontrol --oneliner show job)
  submitted=$(grep -c '^JobId=' <<<"$jobs" || true)
  ((submitted == 9 * ++profiles_done)) || fail "$profile: Slurm knows $submitted jobs, not $((9 * profiles_done))"
  elsewhere=$(grep -v ' Partition=chemistry ' <<<"$jobs" | grep -c '^JobId=' || true)
  ((elsewhere == 0)) || fail "$profile: $elsewhere jobs outside the partition chemistry"
  echo "$profile: job $cancelled cancelled, the campaign failed after $first s; the same command redid it in $second s; the table is the expected one"
  cd "$dir"
done

# 3. Ctrl-C while batch jobs run: Snakemake ends and cancels its jobs, queued or running (some
# may complete before the cancel reaches them; without it, every one would).
for profile in slurm slurm-sbatch; do
  cd "$dir/$profile"
  start_campaign "$profile" results-interrupted interrupted.log
  for ((tick = 0; tick < 600; tick++)); do
    [[ -z $(squeue --noheader --states=RUNNING) ]] || break
    sleep 0.1
  done
  [[ -n $(squeue --noheader --states=RUNNING) ]] || fail "$profile: no batch job running within 60 s"
  # Snakemake is then asking Slurm about its jobs, one a second.
  sleep 2
  queued=$(squeue --noheader --format=%i)
  kill -INT -- "-$campaign_pid"
  for ((tick = 0; tick < 600; tick++)); do
    kill -0 "$campaign_pid" 2>/dev/null || break
    sleep 0.1
  done
  kill -0 "$campaign_pid" 2>/dev/null && fail "$profile: Snakemake still runs 60 s after Ctrl-C"
  wait "$campaign_pid" || true
  for ((tick = 0; tick < 100; tick++)); do
    left=$(squeue --noheader --format=%i)
    [[ -n $left ]] || break
    sleep 0.1
  done
  [[ -z $left ]] || { cat interrupted.log; fail "$profile: jobs $left still queued or running 10 s after Ctrl-C"; }
  cancelled=0
  for job in $queued; do
    scontrol --oneliner show job "$job" | grep -q 'JobState=CANCELLED' && ((++cancelled))
  done
  ((cancelled > 0)) || { cat interrupted.log; fail "$profile: Ctrl-C cancelled none of the jobs" $queued; }
  echo "$profile: Ctrl-C cancelled $cancelled of the $(wc -w <<<"$queued") jobs queued or running"
done
echo "the whole test: $(seconds_since "$started") s"
