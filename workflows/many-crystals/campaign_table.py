"""The campaign table: its columns, a crystal's row from its site_energies result, and the
campaign's summary.

Shared by the workflow, which fills the table from the results of site_energies, and by the
campaign generator, which fills it from the energies it wrote itself.
"""
import csv

CARRIERS = ("hole", "electron")
DISORDER_KEYS = ("sigma_site_meV", "sigma_delta_meV", "sigma_delta_over_sqrt2_meV",
                 "correlation_ratio", "sites", "pairs")
COLUMNS = ["crystal", "outcome", "trusted", "reason", "finding_codes"] + [
    "%s_%s" % (carrier, key) for carrier in CARRIERS for key in DISORDER_KEYS]
# Findings after which a crystal's numbers are not trusted.
UNTRUSTED_SEVERITIES = ("stop", "wrong-number")


def shortest_number(value):
    """The text site_energies gives the number `value`: the fewest significant digits, from
    15 to 17, that read back as `value`. Example: shortest_number(2.0) -> "2" """
    for digits in (15, 16):
        text = "%.*g" % (digits, value)
        if float(text) == value:
            return text
    return "%.17g" % value


def display_name(name):
    """The crystal's name (str, bytes outside UTF-8 kept as the file system encoding keeps
    them) as the table shows it: each byte outside UTF-8 as \\xHH.
    Example: display_name("a\\udcff") -> "a\\\\xff" """
    raw = name.encode("utf-8", "surrogateescape")
    return raw.decode("utf-8", "backslashreplace")


def unique(codes):
    """The codes once each, in order of first appearance."""
    return list(dict.fromkeys(codes))


def result_row(name, result):
    """The row of the crystal `name` from its site_energies JSON document `result`, read with
    its numbers kept as their texts (json.loads with parse_float=str and parse_int=str)."""
    row = dict.fromkeys(COLUMNS, "")
    findings = result["findings"]
    row.update(crystal=display_name(name), finding_codes=" ".join(unique(f["code"] for f in findings)))
    if not result["written"]:
        row.update(outcome="refused", trusted="no", reason=result["refused"])
        return row
    untrusted = any(f["severity"] in UNTRUSTED_SEVERITIES for f in findings)
    row.update(outcome="written", trusted="no" if untrusted else "yes")
    for carrier in CARRIERS:
        for key in DISORDER_KEYS:
            value = result["disorder"][carrier][key]
            row["%s_%s" % (carrier, key)] = "" if value is None else value
    return row


def failed_row(name, outcome, reason):
    """The row of a crystal that gave no result: `outcome` "timed-out" or "failed"."""
    row = dict.fromkeys(COLUMNS, "")
    row.update(crystal=display_name(name), outcome=outcome, trusted="no", reason=reason)
    return row


def write_table(path, rows):
    """Writes `rows` (dicts keyed by COLUMNS) to the CSV file `path` under the header line."""
    with open(path, "w", newline="") as out:
        writer = csv.DictWriter(out, COLUMNS, lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows)


def read_table(path):
    """The rows of a CSV file written by write_table, as dicts keyed by COLUMNS."""
    with open(path, newline="") as source:
        return list(csv.DictReader(source))


def summary_text(rows, include_untrusted):
    """The campaign's summary: how many crystals had each outcome, and the spread of each
    carrier's disorder over the trusted crystals (every written one if `include_untrusted`)."""
    import statistics  # only here: it costs every batch's start otherwise

    counts = {o: sum(r["outcome"] == o for r in rows)
              for o in ("written", "refused", "timed-out", "failed")}
    trusted = sum(r["trusted"] == "yes" for r in rows)
    shown = [r for r in rows if r["outcome"] == "written" and (include_untrusted or r["trusted"] == "yes")]
    lines = ["crystals: %d" % len(rows),
             "written: %d (trusted %d, untrusted %d)" % (counts["written"], trusted,
                                                          counts["written"] - trusted)]
    lines += ["%s: %d" % (o, counts[o]) for o in ("refused", "timed-out", "failed")]
    lines.append("disorder of the %d %s crystals, in meV (ratio without unit):"
                 % (len(shown), "written" if include_untrusted else "trusted"))
    lines.append("%-35s %12s %12s %12s %12s" % ("column", "median", "mean", "min", "max"))
    for carrier in CARRIERS:
        for key in DISORDER_KEYS[:4]:
            column = "%s_%s" % (carrier, key)
            values = [float(r[column]) for r in shown if r[column] != ""]
            if values:
                figures = (statistics.median(values), statistics.fmean(values), min(values),
                           max(values))
                lines.append("%-35s %12.3f %12.3f %12.3f %12.3f" % ((column,) + figures))
            else:
                lines.append("%-35s %12s %12s %12s %12s" % (column, "-", "-", "-", "-"))
    return "\n".join(lines) + "\n"
