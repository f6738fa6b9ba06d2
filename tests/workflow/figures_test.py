#!/usr/bin/env python3
"""Runs workflows/many-crystals/figures.py on a campaign table and a batch it writes itself.
    figures_test.py FIGURES_PY      (status 77, skipped, when matplotlib cannot be imported)
"""
import csv
import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

try:
    import matplotlib.image
except ImportError:
    print("skipped: python3-matplotlib is not installed")
    sys.exit(77)

if len(sys.argv) < 2:
    sys.exit("usage: figures_test.py FIGURES_PY")
FIGURES = sys.argv.pop(1)
HEADER = ["crystal", "outcome", "trusted", "reason", "finding_codes"] + [
    c + s for c in ("hole", "electron") for s in ("_sigma_site_meV", "_sigma_delta_meV",
    "_sigma_delta_over_sqrt2_meV", "_correlation_ratio", "_sites", "_pairs")]
# crystal, outcome, trusted, hole and electron sigma_site, correlation ratio
TABLE = [("-dash, comma", "written", "yes", "7.8981234567891", "12.5", "0.31"),
         ("line\nbreak, byte \\xff", "written", "yes", "1e-3", "20.000", "0.5"),
         ("refused one", "refused", "no", "", "", ""),
         ("untrusted", "written", "no", "3.25", "4.5", "0.2"),
         ("no ratio", "written", "yes", "0", "2.000", "")]
NAME = "-odd, crystal\nwith \\xff"
SITES = [("1", "3.10", "-1.2e0"), ("2", "-4.250", "2.5"), ("3", "0", "0.40")]
# Both directions of a pair, a self-image, a repeated entry, a pair listed only one way.
PAIRS = [("1", "2", "-7.35", "3.7"), ("2", "1", "7.35", "-3.7"), ("1", "1", "0.0", "-0"),
         ("2", "3", "4.25", "-2.1"), ("2", "3", "4.25", "-2.1"), ("3", "1", "-3.10", "-1.6")]
KEYS = ["site", "neighbor", "hole_meV", "electron_meV"]
BATCH = [{"crystal": NAME, "written": True, "refused": None, "disorder": None, "findings": [],
          "sites": [dict(zip(KEYS[:1] + ["hole_relative_meV", "electron_relative_meV"], s))
                    for s in SITES], "pairs": [dict(zip(KEYS, p)) for p in PAIRS]},
         {"crystal": "refused one", "written": False, "refused": "no outputs", "sites": [],
          "pairs": [], "disorder": None, "findings": []}]
# The numbers as their texts, unquoted; then a line cut short.
BATCH = "".join(re.sub(r'"(-?[0-9][-+.e0-9]*)"', r"\1", json.dumps(line)) + "\n"
                for line in BATCH) + '{"crystal": "cut sh'


def run(*args):
    return subprocess.run([sys.executable, FIGURES] + list(args), capture_output=True,
                          text=True, errors="surrogateescape")


class Figures(unittest.TestCase):
    def setUp(self):
        self.dir = self.enterContext(tempfile.TemporaryDirectory())
        self.batch = os.path.join(self.dir, "batch.jsonl")
        with open(self.batch, "w") as out:
            out.write(BATCH)

    def table(self, name, rows, header=HEADER):
        """Writes the campaign table NAME of ROWS, each a row of TABLE."""
        with open(os.path.join(self.dir, name), "w", newline="") as out:
            csv.writer(out, lineterminator="\n").writerows([header] + [
                r[:3] + ("", "") + tuple(x for v in r[3:5] for x in (v, v, v, r[5], "3", "6"))
                for r in rows])
        return out.name

    def test_each_figure_and_the_numbers_it_shows(self):
        trusted = [list(r[:1] + r[3:5]) for r in TABLE if r[2] == "yes" and r[3]]
        written = [list(r[:1] + r[3:5]) for r in TABLE if r[1] == "written"]
        points = [HEADER[:1] + HEADER[5:6] + HEADER[11:12]]
        for number, (args, rows) in enumerate([
                (["disorder", self.table("all.csv", TABLE), None], points + trusted),
                (["disorder", self.table("all.csv", TABLE), None, "--all"], points + written),
                (["disorder", self.table("no.csv", [r for r in TABLE if r[2] == "no"]), None],
                 points),
                (["disorder", self.table("one.csv", TABLE[:1]), None, "--all"],
                 points + written[:1]),
                (["crystal", self.batch, NAME, None], [["kind"] + KEYS] + [["site", s, "", h, e]
                 for s, h, e in SITES] + [["pair"] + list(p) for p in PAIRS])]):
            stem, rerun = (os.path.join(self.dir, "%s%d" % (out, number), args[0])
                           for out in ("out", "rerun"))
            for out in (stem, rerun):
                out = os.path.dirname(out) if args[0] == "disorder" else out
                status = run(*[out if arg is None else arg for arg in args])
                self.assertEqual(status.returncode, 0, status.stderr)
            with open(stem + ".png", "rb") as png:
                signature, _, chunk, width, height = struct.unpack(">8sI4sII", png.read(24))
            self.assertEqual((signature, chunk), (b"\x89PNG\r\n\x1a\n", b"IHDR"))
            self.assertTrue(600 < width < 4000 and 600 < height < 4000, (width, height))
            self.assertGreater(matplotlib.image.imread(stem + ".png").std(), 0.05)
            self.assertTrue(ElementTree.parse(stem + ".svg").getroot().tag.endswith("}svg"))
            for ext in (".svg", ".csv"):  # a rerun writes the same bytes
                with open(stem + ext, "rb") as first, open(rerun + ext, "rb") as second:
                    data = first.read()
                    self.assertEqual(data, second.read(), ext)
            self.assertNotIn(b"\r", data)
            self.assertEqual(list(csv.reader(data.decode().splitlines(keepends=True))), rows)

    def test_what_cannot_be_drawn_writes_nothing(self):
        out = os.path.join(self.dir, "out")
        for args, message in [
                (["crystal", self.batch, "refused one", out + "/x"], "refused one: not written"),
                (["crystal", self.batch, "cut\nshort", out + "/x"], "cut\\x0ashort: not in"),
                (["disorder", self.table("bare.csv", [], ["crystal", "outcome"]), out],
                 "bare.csv: no column trusted")]:
            status = run(*args)
            self.assertEqual((status.returncode, status.stdout, os.path.exists(out)),
                             (1, "", False), args)
            self.assertRegex(status.stderr, r"\Afigures\.py: [^\n]*%s[^\n]*\n\Z"
                             % re.escape(message))


if __name__ == "__main__":
    unittest.main()
