#!/usr/bin/env python3
"""From a structure file to the campaign's table through real NWChem runs.
    structure_campaign.py WORKFLOW_DIR SITE_ENERGIES   (status 77, skipped, without nwchem,
                                                        snakemake or python3-ase)

Two crystals are made from the two-H2 cell of make_crystal_test.py by make_crystal.py and run
by the workflow's local profile: "h2", whose table must hold the energies NWChem printed and
whose neighbor.dat the one worked out by hand; and "faulty", the same cell through an engine
command that fails one run (status 3) and cuts another's output short, which must be reported
and leave the crystal untrusted. Then: a rerun does nothing; a moved molecule redoes its three
runs only, also after a kill in the middle; a new neighbour distance redoes no run.
"""
import csv
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

WORKFLOW, SITE_ENERGIES = (os.path.abspath(p) for p in sys.argv[1:3])
for program in ("nwchem", "snakemake"):
    if shutil.which(program) is None:
        print("skipped: %s is not installed (apt-get install %s)" % (program, program))
        sys.exit(77)
SNAKEMAKE_PYTHON = open(shutil.which("snakemake")).readline()[2:].strip()
if subprocess.run([SNAKEMAKE_PYTHON, "-c", "import ase"], stderr=subprocess.DEVNULL).returncode:
    print("skipped: python3-ase is not installed (apt-get install python3-ase)")
    sys.exit(77)
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "workflow"))
from make_crystal_test import CELL, CELL_NEIGHBORS  # noqa: E402

HARTREE_TO_MEV = 27211.4  # as the tables convert
# The engine command of the test: NWChem, with two faults planted in the crystal "faulty".
ENGINE = """nwchem "$1" > "$2"
case $PWD in
  */faulty/site001_anion.run) exit 3 ;;
  */faulty/site002_cation.run) head -n -30 "$2" > cut && mv cut "$2" ;;
esac
"""
failures = []


def expect(what, ok, detail=""):
    print("%s %s%s" % ("ok  " if ok else "FAIL", what, "" if ok else ": " + detail))
    if not ok:
        failures.append(what)


def make(structure, crystal, *config):
    done = subprocess.run([SNAKEMAKE_PYTHON, os.path.join(WORKFLOW, "make_crystal.py"),
                           structure, "crystals/" + crystal, "--config", "neighbor_distance=3.5",
                           "qc_basis=sto-3g"] + list(config), stdout=subprocess.PIPE, text=True)
    assert done.returncode == 0, "make_crystal failed"
    return done.stdout


def campaign(*config, background=False):
    """Runs the campaign; returns (status, log, seconds), or the process when `background`."""
    command = ["snakemake", "--snakefile", os.path.join(WORKFLOW, "Snakefile"), "--profile",
               os.path.join(WORKFLOW, "profiles", "local"), "--cores", "2", "--config",
               "site_energies=" + SITE_ENERGIES, "neighbor_distance=3.5", "qc_basis=sto-3g",
               "qc_command=bash ../../../engine.sh {input} {output}"] + list(config)
    env = dict(os.environ, OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1")
    if background:
        return subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.STDOUT,
                                env=env, start_new_session=True)
    started = time.monotonic()
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          env=env)
    return done.returncode, done.stdout, time.monotonic() - started


def jobs(log):
    """The jobs a campaign's log shows run: {rule: [wildcards line]}."""
    ran = {}
    for rule, wildcards in re.findall(r"^(?:local)?rule (\w+):\n(?:    .*\n)*?    wildcards: (.*)",
                                       log, re.M):
        ran.setdefault(rule, []).append(wildcards)
    return ran


def rows():
    with open("results/crystals.csv") as source:
        return {row["crystal"]: row for row in csv.DictReader(source)}


def check():
    for name in ("cell.xyz", "faulty.xyz"):
        with open(name, "w") as out:
            out.write(CELL)
    with open("engine.sh", "w") as out:
        out.write(ENGINE)
    started = time.monotonic()
    print(make("cell.xyz", "h2").strip())
    make("faulty.xyz", "faulty")
    made = time.monotonic() - started
    status, log, seconds = campaign()
    print("make_crystal: %.1f s for two crystals; campaign: %.1f s (%d engine runs)"
          % (made, seconds, len(jobs(log).get("engine_run", []))))
    expect("first campaign: status 0, 12 engine runs", status == 0 and
           len(jobs(log).get("engine_run", [])) == 12, log[-3000:])
    table = rows()
    h2 = table.get("h2", {})
    expect("h2: written and trusted", (h2.get("outcome"), h2.get("trusted")) == ("written", "yes"),
           str(h2))
    printed = []
    for site in (1, 2):
        energies = []
        for state in ("anion", "cation", "neutral"):
            with open("crystals/h2/site%03d_%s.out" % (site, state)) as source:
                energies.append(float(re.findall(r"Total DFT energy = *(\S+)", source.read())[-1]))
        printed.append("".join("%20.6f " % (e * HARTREE_TO_MEV) for e in energies)[:-1])
    with open("crystals/h2/uc_U.dat") as source:
        expect("h2: uc_U.dat holds the energies NWChem printed",
               source.read().splitlines()[1:3] == printed, str(printed))
    with open("crystals/h2/neighbor.dat") as source:
        expect("h2: neighbor.dat as worked out by hand",
               source.read().split("\n", 2)[2] == CELL_NEIGHBORS)
    faulty = table.get("faulty", {})
    expect("faulty: refused and untrusted, the failed run named in its reason",
           faulty.get("outcome") == "refused" and faulty.get("trusted") == "no" and
           faulty.get("reason", "").startswith(
               "engine runs failed: site001_anion (ended with status 3); "), str(faulty))
    expect("faulty: the failed run's output kept under a name that says so, reported",
           os.path.exists("crystals/faulty/site001_anion.failed.out") and
           not os.path.exists("crystals/faulty/site001_anion.out") and
           "engine run failed: crystals/faulty/site001_anion.nw" in log)
    expect("faulty: the cut-off output found", "not-normal-termination" in
           faulty.get("finding_codes", ""), str(faulty))

    status, log, _ = campaign()
    expect("rerun: nothing done", status == 0 and not jobs(log), str(jobs(log)))

    # Site 2 of h2 moved: its three runs redone, also when the first try is killed midway.
    with open("cell.xyz", "w") as out:
        out.write(CELL.replace("1.5 8.5 0.66", "1.5 8.5 0.64"))
    make("cell.xyz", "h2")
    process = campaign(background=True)
    while process.poll() is None and not any(n.endswith(".run") for n in
                                             os.listdir("crystals/h2")):
        time.sleep(0.05)
    os.killpg(process.pid, signal.SIGKILL)
    process.wait()
    status, log, _ = campaign()
    redone = sorted(jobs(log).get("engine_run", []))
    expect("moved molecule, after a kill: its runs redone, nothing else",
           status == 0 and len(redone) <= 3 and all("crystal=h2, run=site002_" in w
                                                    for w in redone) and
           rows()["h2"]["trusted"] == "yes" and not os.path.exists(
               "crystals/h2/site002_anion.run"), str(jobs(log)))
    status, log, _ = campaign("neighbor_distance=2.5")
    expect("a new neighbour distance: crystals made again, no run redone",
           status == 0 and "engine_run" not in jobs(log) and len(jobs(log)["batch"]) == 1 and
           rows()["h2"]["hole_pairs"] == "4", str(jobs(log)))


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    work = tempfile.mkdtemp(prefix="structure_campaign.")
    try:
        os.chdir(work)
        check()
    finally:
        shutil.rmtree(work, ignore_errors=True)
    if failures:
        sys.exit("%d check(s) failed" % len(failures))


if __name__ == "__main__":
    main()
