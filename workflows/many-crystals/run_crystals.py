#!/usr/bin/env python3
"""Checks and runs a batch of crystals, and writes their rows of the campaign table.

    run_crystals.py --root ROOT --reports DIR --check PROGRAM --job PROGRAM --rows OUT.csv
                    CRYSTAL...

In each directory ROOT/CRYSTAL: `check_inter_ener -batch int_ener_files.dat -neighbor -json`,
its report kept as DIR/CRYSTAL.json (its standard error, if any, as DIR/CRYSTAL.check-errors.txt);
when the report says the run would succeed, `get_inter_ener -batch int_ener_files.dat -neighbor`,
its standard output and error kept as DIR/CRYSTAL.run.txt; then the crystal's row. A crystal
that cannot be checked or run gets a row that says why: this script itself ends with status 0
whatever the crystals hold, so one crystal never stops the campaign.
"""
import argparse
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import campaign_table  # noqa: E402

RUN_ARGS = ["-batch", "int_ener_files.dat", "-neighbor"]


def run(program, args, directory, out_path, err_path):
    """Runs `program` in `directory`, its standard output and error written straight to the
    files `out_path` and `err_path` (they may be the same); returns its exit status as a shell
    gives it (128 + the signal for a program killed by one). A program that cannot be started
    gives 127 and the reason in `err_path`."""
    with open(out_path, "w") as out, open(err_path, "a" if err_path == out_path else "w") as err:
        try:
            status = subprocess.run([program] + args, cwd=directory, stdout=out,
                                    stderr=err).returncode
        except OSError as error:
            err.write("%s\n" % error)
            return 127
    return 128 - status if status < 0 else status


def read_text(path):
    """The text of the file `path`, undecodable bytes replaced."""
    with open(path, errors="replace") as source:
        return source.read()


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


def last_line(text):
    """The last non-blank line of `text`, without its surrounding blanks."""
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    return lines[-1] if lines else ""


def unique(codes):
    """The codes once each, in order of first appearance."""
    return list(dict.fromkeys(codes))


def check_crystal(row, reports, check, directory):
    """Runs the check in `directory`, keeps its report and fills the row's check columns;
    returns whether the run would succeed (False when the check gave no report)."""
    crystal = row["crystal"]
    report_path = os.path.join(reports, crystal + ".json")
    errors_path = os.path.join(reports, crystal + ".check-errors.txt")
    status = run(check, RUN_ARGS + ["-json"], directory, report_path, errors_path)
    errors = read_text(errors_path)
    if not errors:
        os.remove(errors_path)
    try:
        report = json.loads(read_text(report_path))
        findings = report["findings"]
        row.update(sites=len({r["site"] for r in report["rows"]}), check_status=report["status"],
                   finding_codes=" ".join(unique(f["code"] for f in findings)))
        if report["would_succeed"]:
            return True
        stops = unique(f["code"] for f in findings if f["severity"] == "stop")
        row.update(outcome="skipped", reason="stopped by " + " ".join(stops))
    except (ValueError, KeyError, TypeError):
        row.update(check_status=status, outcome="skipped",
                   reason="no report from check_inter_ener (status %d): %s"
                   % (status, last_line(errors)))
    return False


def run_crystal(row, reports, job, directory):
    """Runs the job in `directory`, keeps its output and fills the row's outcome and
    statistics from the tables it wrote."""
    output_path = os.path.join(reports, row["crystal"] + ".run.txt")
    status = run(job, RUN_ARGS, directory, output_path, output_path)
    if status != 0:
        row.update(outcome="failed", reason="get_inter_ener status %d: %s"
                   % (status, last_line(read_text(output_path))))
        return
    with open(os.path.join(directory, "uc_U.dat")) as energies:
        sites = int(energies.readline())
    for prefix, name in (("EH", "holes"), ("EL", "electrons")):
        stats = campaign_table.pair_statistics(site_values(directory, prefix, sites))
        for key, value in zip(("pairs", "mean_meV", "sd_meV", "min_meV", "max_meV"), stats):
            row["%s_%s" % (name, key)] = value
    row["outcome"] = "ran"


def crystal_row(root, reports, check, job, crystal):
    """Checks and, when the check allows, runs one crystal; returns its row. Whatever goes
    wrong with the crystal (unreadable tables, a directory that vanished) is said in the row."""
    row = dict.fromkeys(campaign_table.COLUMNS, "")
    row["crystal"] = crystal
    directory = os.path.join(root, crystal)
    try:
        if check_crystal(row, reports, check, directory):
            run_crystal(row, reports, job, directory)
    except (OSError, ValueError, IndexError, ArithmeticError) as error:
        row.update(outcome="failed", reason="%s: %s" % (type(error).__name__, error))
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
