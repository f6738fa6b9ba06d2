#!/usr/bin/env python3
"""Checks and runs a batch of crystals, and writes their rows of the campaign table.

    run_crystals.py --root ROOT --reports DIR --check PROGRAM --job PROGRAM --rows OUT.csv
                    CRYSTAL...

In each directory ROOT/CRYSTAL: `check_inter_ener -batch int_ener_files.dat -neighbor -json`,
its report kept as DIR/CRYSTAL.json; when the report says the run would succeed,
`get_inter_ener -batch int_ener_files.dat -neighbor`, its output kept as DIR/CRYSTAL.run.txt;
then the crystal's row. A crystal that cannot be checked or run gets a row that says why: this
script itself ends with status 0 whatever the crystals hold, so one crystal never stops the
campaign.
"""
import argparse
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import campaign_table  # noqa: E402

RUN_ARGS = ["-batch", "int_ener_files.dat", "-neighbor"]


def run(program, args, directory):
    """Runs `program` in `directory`: (status, standard output, standard error); a program
    that cannot be started gives status 127 and the reason as its error text."""
    try:
        done = subprocess.run([program] + args, cwd=directory, capture_output=True, text=True,
                              errors="replace")
        return done.returncode, done.stdout, done.stderr
    except OSError as error:
        return 127, "", str(error)


def table_values(path):
    """The values of an EH/EL table (count line, values, "# in meV"), as printed."""
    with open(path) as table:
        lines = [line.strip() for line in table]
    return lines[1:1 + int(lines[0])]


def site_values(directory, prefix, sites):
    """The values of PREFIX01.dat .. PREFIXnn.dat of a crystal, in site order."""
    values = []
    for site in range(1, sites + 1):
        values += table_values(os.path.join(directory, "%s%02d.dat" % (prefix, site)))
    return values


def last_line(*texts):
    """The last non-blank line of the first text that has one."""
    for text in texts:
        lines = [line.strip() for line in text.splitlines() if line.strip()]
        if lines:
            return lines[-1]
    return ""


def unique(codes):
    """The codes once each, in order of first appearance."""
    return list(dict.fromkeys(codes))


def crystal_row(root, reports, check, job, crystal):
    """Checks and, when the check allows, runs one crystal; returns its row."""
    directory = os.path.join(root, crystal)
    row = dict.fromkeys(campaign_table.COLUMNS, "")
    row["crystal"] = crystal
    status, out, err = run(check, RUN_ARGS + ["-json"], directory)
    with open(os.path.join(reports, crystal + ".json"), "w") as kept:
        kept.write(out)
    try:
        report = json.loads(out)
        findings = report["findings"]
        sites = len({r["site"] for r in report["rows"]})
        would_succeed = report["would_succeed"]
        row.update(sites=sites, check_status=report["status"],
                   finding_codes=" ".join(unique(f["code"] for f in findings)))
    except (ValueError, KeyError, TypeError):
        row.update(check_status=status, outcome="skipped",
                   reason="no report from check_inter_ener (status %d): %s"
                   % (status, last_line(err, out)))
        return row
    if not would_succeed:
        stops = unique(f["code"] for f in findings if f["severity"] == "stop")
        row.update(outcome="skipped", reason="stopped by " + " ".join(stops))
        return row
    status, out, err = run(job, RUN_ARGS, directory)
    with open(os.path.join(reports, crystal + ".run.txt"), "w") as kept:
        kept.write(out + err)
    if status != 0:
        row.update(outcome="failed",
                   reason="get_inter_ener status %d: %s" % (status, last_line(err, out)))
        return row
    try:
        with open(os.path.join(directory, "uc_U.dat")) as energies:
            sites = int(energies.readline())
        for prefix, name in (("EH", "holes"), ("EL", "electrons")):
            stats = campaign_table.pair_statistics(site_values(directory, prefix, sites))
            for key, value in zip(("pairs", "mean_meV", "sd_meV", "min_meV", "max_meV"), stats):
                row["%s_%s" % (name, key)] = value
    except (OSError, ValueError, ArithmeticError) as error:
        row.update(outcome="failed", reason="tables unreadable: %s" % error)
        return row
    row["outcome"] = "ran"
    return row


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", required=True)
    parser.add_argument("--reports", required=True)
    parser.add_argument("--check", required=True)
    parser.add_argument("--job", required=True)
    parser.add_argument("--rows", required=True)
    parser.add_argument("crystals", nargs="*")
    args = parser.parse_args()
    os.makedirs(args.reports, exist_ok=True)
    rows = [crystal_row(args.root, args.reports, args.check, args.job, crystal)
            for crystal in args.crystals]
    campaign_table.write_table(args.rows, rows)


if __name__ == "__main__":
    main()
