#!/usr/bin/env python3
"""make_crystal.py on structures whose molecules and neighbours are known by construction.
    make_crystal_test.py WORKFLOW_DIR      (status 77, skipped, without python3-ase)

The cell of CELL holds two H2 molecules, each cut by the cell's top face (written with one atom
near z = 10 and one near z = 0), 3 Å from their own images along a and 2.12 Å from two images of
each other across the b face. Within 3.5 Å each site has four neighbours: its own two images
along a, and two images of the other site.
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest

try:
    import ase.io  # noqa: F401
except ImportError:
    print("skipped: python3-ase is not installed")
    sys.exit(77)

WORKFLOW = os.path.abspath(sys.argv.pop(1))
sys.path.insert(0, WORKFLOW)
import engine_inputs  # noqa: E402
import make_crystal  # noqa: E402
import molecules  # noqa: E402

LATTICE = 'Lattice="3.0 0.0 0.0 0.0 10.0 0.0 0.0 0.0 10.0" Properties=species:S:1:pos:R:3'


def xyz(atoms, lattice=LATTICE):
    return "%d\n%s\n%s" % (len(atoms), lattice, "".join("%s %s\n" % a for a in atoms))


CELL = xyz([("H", "0 0 9.8"), ("H", "1.5 8.5 9.9"), ("H", "0 0 0.54"), ("H", "1.5 8.5 0.66")])
# Expected neighbor.dat of CELL within 3.5 Å, worked out by hand.
CELL_NEIGHBORS = "2\n1\n4\n1\n1\n2\n2\n2\n4\n1\n1\n2\n2\n"


class MakeCrystal(unittest.TestCase):
    def setUp(self):
        self.work = tempfile.TemporaryDirectory()
        self.addCleanup(self.work.cleanup)

    def structure(self, text, name="cell.xyz"):
        path = os.path.join(self.work.name, name)
        with open(path, "w") as out:
            out.write(text)
        return path

    def make(self, text, *config, name="cell.xyz"):
        return subprocess.run(
            [sys.executable, os.path.join(WORKFLOW, "make_crystal.py"),
             self.structure(text, name), os.path.join(self.work.name, "crystal"), "--config",
             "neighbor_distance=3.5", "qc_basis=sto-3g"] + list(config),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def read(self, name):
        with open(os.path.join(self.work.name, "crystal", name)) as source:
            return source.read()

    def test_molecules_made_whole_and_neighbours_with_images(self):
        done = self.make(CELL)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(self.read("neighbor.dat").split("\n", 2)[2], CELL_NEIGHBORS)
        self.assertEqual(self.read("int_ener_files.dat"),
                         "2\nsite001_anion.out site001_cation.out site001_neutral.out\n"
                         "site002_anion.out site002_cation.out site002_neutral.out\n")
        # Site 1 is atoms 1 and 3, the second moved up by the cell's c to sit 0.74 Å above.
        self.assertEqual([s["atoms"] for s in make_crystal.read_record(
            os.path.join(self.work.name, "crystal"))["sites"]], [[1, 3], [2, 4]])
        self.assertIn("H       0.0000000000      0.0000000000     10.5400000000\n",
                      self.read("site001_neutral.nw"))

    def test_supercell_and_mutual_lists(self):
        atoms = molecules.read_structure(self.structure(CELL)).repeat((2, 1, 1))
        sites = molecules.find_molecules(atoms)
        self.assertEqual([len(m) for m, _ in sites], [2] * 4)
        lists = molecules.find_neighbors(atoms, sites, 3.5)
        # A's copies (sites 1, 3) lie 3 Å apart both ways round a 6 Å cell; each B one image.
        self.assertEqual([[t for t, _ in listed] for listed in lists],
                         [[1, 2, 2, 3], [0, 2, 3, 3], [0, 0, 1, 3], [0, 1, 1, 2]])
        for s, listed in enumerate(lists):
            for t, shift in listed:
                self.assertIn((s, tuple(-k for k in shift)), lists[t])

    def test_charges_and_multiplicities_of_every_engine(self):
        # H2 (2 electrons) and NO (15): anion, cation, neutral of each.
        cell = xyz([("H", "0 0 0"), ("H", "0 0 0.74"), ("N", "1.5 5 5"), ("O", "1.5 5 6.15")])
        expected = {1: {"anion": (-1, 2), "cation": (1, 2), "neutral": (0, 1)},
                    2: {"anion": (-1, 1), "cation": (1, 1), "neutral": (0, 2)}}
        # Each engine's charge and multiplicity, and atoms, as its documented format has them.
        patterns = {
            "gaussian": r"\A#P B3LYP/sto-3g NoSymm\n\nsite \d \w+ \w+\n\n(-?\d) (\d)\n"
                        r"((?:[A-Z][a-z]? +-?\d+\.\d{10} +-?\d+\.\d{10} +-?\d+\.\d{10}\n){2})\n\Z",
            "orca": r"\A# site \d \w+ \w+\n! b3lyp sto-3g\n\* xyz (-?\d) (\d)\n"
                    r"((?:[A-Z][a-z]? +\S+ +\S+ +\S+\n){2})\*\n\Z",
            "qchem": r"\A\$comment\n.*\n\$end\n\n\$molecule\n(-?\d) (\d)\n((?: +\S+){4}\n(?: +\S+"
                     r"){4}\n)\$end\n\n\$rem\n   JOBTYPE +sp\n   METHOD +b3lyp\n   BASIS +sto-3g"
                     r"\n   SYM_IGNORE +true\n   UNRESTRICTED +(?:true|false)\n\$end\n\Z",
            "nwchem": r"\Aecho\nstart site\d+_\w+\ntitle \"[^\"]+\"\ncharge (-?\d)\ngeometry units "
                      r"angstrom nocenter noautosym noautoz\n  symmetry c1\n((?: +\S+){4}\n(?: "
                      r"+\S+){4}\n)end\nbasis\n  \* library sto-3g\nend\ndft\n  xc b3lyp\n  "
                      r"mult (\d)\nend\ntask dft\n\Z",
        }
        for engine, pattern in patterns.items():
            done = self.make(cell, "qc_engine=" + engine)
            self.assertEqual(done.returncode, 0, done.stderr)
            suffix = engine_inputs.ENGINES[engine].input_suffix
            for site, states in expected.items():
                for state, (charge, mult) in states.items():
                    text = self.read("site%03d_%s%s" % (site, state, suffix))
                    found = re.match(pattern, text)
                    self.assertTrue(found, "%s:\n%s" % (engine, text))
                    numbers = found.groups()
                    if engine == "nwchem":
                        numbers = (numbers[0], numbers[2], numbers[1])
                    self.assertEqual((int(numbers[0]), int(numbers[1])), (charge, mult),
                                     "%s site %d %s" % (engine, site, state))
                    if engine == "qchem":
                        self.assertIn("UNRESTRICTED  %s" % ("true" if mult > 1 else "false"), text)

    def test_bad_structures_refused_with_nothing_written(self):
        cases = [
            ("", "is empty"),
            ("2\n\nH 0 0 0\nH 0 0 0.74\n", "has no cell"),
            (CELL.replace("H 0 0 0.54", "He 0 0 4"), "atom 1 (H) is bonded to no other atom"),
            (xyz([("H", "0 0 0"), ("H", "0.7 0 0")], LATTICE.replace('"3.0', '"1.4')),
             "bonded to its own periodic image"),
            (CELL.replace("H 0 0 0.54", "Xx 0 0 0.54"), "unknown element"),
            ("not a structure\n", "not a structure ASE can read"),
        ]
        for text, message in cases:
            done = self.make(text)
            self.assertEqual(done.returncode, 1, text)
            self.assertRegex(done.stderr, r"^make_crystal: \S+cell.xyz: .*" + re.escape(message))
            self.assertFalse(os.path.exists(os.path.join(self.work.name, "crystal")), text)
        self.assertIn("qc_engine 'vasp' is none of", self.make(CELL, "qc_engine=vasp").stderr)

    def test_only_changed_inputs_rewritten_and_their_outputs_removed(self):
        self.make(CELL)
        folder = os.path.join(self.work.name, "crystal")
        for stem in ("site001_anion", "site002_anion", "site002_cation"):
            for ext in (".out", ".status"):
                open(os.path.join(folder, stem + ext), "w").close()
        before = {n: os.stat(os.path.join(folder, n)).st_mtime_ns for n in os.listdir(folder)}
        # Site 2's molecule stretched; site 1 unchanged; then NWChem's inputs replaced.
        done = self.make(CELL.replace("1.5 8.5 0.66", "1.5 8.5 0.64"))
        self.assertIn("6 nwchem inputs (3 written)", done.stdout)
        changed = sorted(n for n in os.listdir(folder)
                         if os.stat(os.path.join(folder, n)).st_mtime_ns != before.get(n))
        self.assertEqual(changed, ["crystal.json", "site002_anion.nw", "site002_cation.nw", "site002_neutral.nw"])
        self.assertEqual(sorted(set(before) - set(os.listdir(folder))),
                         ["site002_anion.out", "site002_anion.status", "site002_cation.out",
                          "site002_cation.status"])
        self.make(CELL, "qc_engine=orca")
        self.assertEqual(sorted(n for n in os.listdir(folder) if n.startswith("site001")),
                         ["site001_anion.inp", "site001_cation.inp", "site001_neutral.inp"])


if __name__ == "__main__":
    unittest.main()
