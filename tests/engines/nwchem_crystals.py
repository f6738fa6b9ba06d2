#!/usr/bin/env python3
"""Crystals of real NWChem outputs through site_energies.
    nwchem_crystals.py SITE_ENERGIES      (status 77, skipped, when nwchem is not installed)

Runs NWChem on formaldehyde, B3LYP/STO-3G, as anion (-1, doublet), cation (+1, doublet) and
neutral (0, singlet), and on deliberately wrong partners (a cation in 3-21G, a neutral by HF, a
cation of ammonia); builds two-site crystals of them and checks that site_energies writes the
clean one with exactly the energies NWChem printed, and refuses each planted mistake with its
finding. Everything happens in a temporary folder, removed at the end.
"""
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

if len(sys.argv) != 2:
    sys.exit("usage: nwchem_crystals.py SITE_ENERGIES")
SITE_ENERGIES = os.path.abspath(sys.argv[1])
NWCHEM = shutil.which("nwchem")
if NWCHEM is None:
    print("nwchem_crystals: skipped: nwchem is not installed (Debian package nwchem)",
          file=sys.stderr)
    sys.exit(77)

HARTREE_TO_MEV = 27211.4  # as the tables convert
FORMALDEHYDE = """  C   0.000   0.000  -0.529
  O   0.000   0.000   0.677
  H   0.000   0.935  -1.119
  H   0.000  -0.935  -1.119"""
AMMONIA = """  N   0.000   0.000   0.116
  H   0.000   0.939  -0.271
  H   0.813  -0.470  -0.271
  H  -0.813  -0.470  -0.271"""

# name: (atoms, charge, multiplicity, basis, method); method "scf" is Hartree-Fock.
RUNS = {
    "anion": (FORMALDEHYDE, -1, 2, "sto-3g", "b3lyp"),
    "cation": (FORMALDEHYDE, 1, 2, "sto-3g", "b3lyp"),
    "neutral": (FORMALDEHYDE, 0, 1, "sto-3g", "b3lyp"),
    "cation_321g": (FORMALDEHYDE, 1, 2, "3-21g", "b3lyp"),
    "neutral_hf": (FORMALDEHYDE, 0, 1, "sto-3g", "scf"),
    "ammonia_cation": (AMMONIA, 1, 2, "sto-3g", "b3lyp"),
}


def nwchem_input(name, atoms, charge, mult, basis, method, folder):
    theory = ("scf\n  %s\n  nopen %d\nend\ntask scf\n" % ("uhf" if mult > 1 else "rhf", mult - 1)
              if method == "scf" else "dft\n  xc %s\n  mult %d\nend\ntask dft\n" % (method, mult))
    return ("echo\nstart %s\npermanent_dir %s\nscratch_dir %s\ntitle \"%s\"\ncharge %d\n"
            "geometry units angstrom noautoz nocenter\n  symmetry c1\n%s\nend\n"
            "basis\n  * library %s\nend\n%s") % (name, folder, folder, name, charge, atoms,
                                                   basis, theory)


def run_nwchem(work):
    """Each run's output, work/runs/NAME.out; the runs' wall time."""
    runs = os.path.join(work, "runs")
    os.mkdir(runs)
    # Open MPI refuses to start as root unless told; NWChem runs here as one process, no mpirun.
    env = dict(os.environ, OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1")
    started = time.monotonic()
    for name, (atoms, charge, mult, basis, method) in RUNS.items():
        scratch = os.path.join(runs, name + ".d")
        os.mkdir(scratch)
        with open(os.path.join(runs, name + ".nw"), "w") as f:
            f.write(nwchem_input(name, atoms, charge, mult, basis, method, scratch))
        with open(os.path.join(runs, name + ".out"), "w") as out:
            done = subprocess.run([NWCHEM, name + ".nw"], cwd=runs, stdout=out,
                                  stderr=subprocess.PIPE, env=env, timeout=50)
        if done.returncode != 0:
            sys.exit("nwchem failed on %s (status %d): %s" % (name, done.returncode,
                                                              done.stderr.decode()[-2000:]))
    return time.monotonic() - started


def final_energy(path):
    """The value of the last "Total DFT energy" line, as NWChem printed it."""
    values = re.findall(r"^ *Total DFT energy = *(\S+) *$", open(path).read(), re.M)
    return values[-1] if values else sys.exit("%s: no Total DFT energy line" % path)


def build_crystal(work, name, site2):
    """A crystal of two neighbouring sites: site 1 the clean anion, cation and neutral, site 2
    the outputs `site2` names (anion, cation, neutral)."""
    folder = os.path.join(work, name)
    os.mkdir(folder)
    for run in set(["anion", "cation", "neutral"] + site2):
        source = os.path.join(work, "runs", run.replace("_copy", "") + ".out")
        shutil.copy(source, os.path.join(folder, run + ".out"))
    with open(os.path.join(folder, "int_ener_files.dat"), "w") as f:
        f.write("2\nanion.out cation.out neutral.out\n%s\n" % " ".join(r + ".out" for r in site2))
    with open(os.path.join(folder, "neighbor.dat"), "w") as f:
        f.write("# two sites\n# site / neighbour count / neighbours\n2\n1\n1\n2\n2\n1\n1\n")
    return folder


def site_energies(folder):
    done = subprocess.run([SITE_ENERGIES, "--json", folder], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=30)
    lines = done.stdout.decode().splitlines()
    if len(lines) != 1:
        sys.exit("%s: expected one JSON line, got %r" % (folder, done.stdout.decode()))
    return done.returncode, json.loads(lines[0])


def check(work):
    failures = []

    def expect(what, ok, detail="", shown=""):
        print("%s %s%s" % ("ok  " if ok else "FAIL", what, shown if ok else ": " + detail))
        if not ok:
            failures.append(what)

    # The clean crystal: written, uc_U.dat holding NWChem's own final DFT energies in meV.
    folder = build_crystal(work, "clean", ["anion", "cation", "neutral"])
    status, doc = site_energies(folder)
    expect("clean crystal: status 0, written, no finding",
           status == 0 and doc["written"] and doc["findings"] == [], "status %d, %s" %
           (status, json.dumps(doc)[:1500]))
    row = "".join("%20.6f " % (float(final_energy(os.path.join(folder, r + ".out"))) *
                               HARTREE_TO_MEV) for r in ("anion", "cation", "neutral"))
    expected = ("2\n" + (row[:-1] + "\n") * 2 +
                "#       U_cC (anion)        U_cC (cation)       U_nN (neutral)  in meV\n")
    table = os.path.join(folder, "uc_U.dat")
    written = open(table).read() if os.path.exists(table) else "(none)"
    expect("clean crystal: uc_U.dat holds the energies NWChem printed", written == expected,
           "\n%s\nexpected\n%s" % (written, expected))
    levels = sorted(set(f["level"] for f in doc["files"]))
    expect("clean crystal: every energy taken is the DFT total", levels == ["DFT"], str(levels))

    # Each planted mistake in site 2 refuses the crystal with its finding on that site.
    mistakes = [
        ("anion and cation exchanged", ["cation", "anion", "neutral"], {"anion-cation-swapped"},
         "cation.out"),
        ("an anion column holding a neutral run", ["neutral_copy", "cation", "neutral"],
         {"charge-mismatch"}, "neutral_copy.out"),
        ("a cation in another basis", ["anion", "cation_321g", "neutral"], {"basis-mismatch"},
         "cation_321g.out"),
        ("a neutral by another method", ["anion", "cation", "neutral_hf"], {"method-mismatch"},
         "neutral_hf.out"),
        ("a cation of another molecule", ["anion", "ammonia_cation", "neutral"],
         {"atom-count-mismatch", "formula-mismatch"}, "ammonia_cation.out"),
        ("a neutral column naming the anion's output", ["anion", "cation", "anion"],
         {"charge-mismatch"}, None),
    ]
    for number, (what, site2, codes, planted) in enumerate(mistakes, 1):
        folder = build_crystal(work, "mistake%d" % number, site2)
        status, doc = site_energies(folder)
        found = [f for f in doc["findings"] if f["code"] in codes and f["site"] == 2 and
                 (planted is None or f["file"] == planted)]
        # Refused for the finding, not for a fault of the crystal's lists ("stop").
        stops = [f["code"] for f in doc["findings"] if f["severity"] == "stop"]
        expect("%s: refused (status 2, not written) with %s" % (what, " or ".join(sorted(codes))),
               status == 2 and not doc["written"] and doc["refused"] and found and not stops and
               not os.path.exists(os.path.join(folder, "uc_U.dat")),
               "status %d, refused %r, findings %s" % (status, doc["refused"],
                                                       json.dumps(doc["findings"])),
               " [%s]" % ", ".join(f["code"] for f in doc["findings"]))
    return failures


def main():
    # The temporary folder goes whatever ends the test, a timeout's SIGTERM included.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    work = tempfile.mkdtemp(prefix="nwchem_crystals.")
    try:
        seconds = run_nwchem(work)
        print("nwchem: %d runs in %.1f s" % (len(RUNS), seconds))
        failures = check(work)
    finally:
        shutil.rmtree(work, ignore_errors=True)
    if failures:
        sys.exit("%d check(s) failed" % len(failures))


if __name__ == "__main__":
    main()
