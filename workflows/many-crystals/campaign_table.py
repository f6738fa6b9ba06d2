"""The campaign table: its columns, and the statistics of a crystal's site-energy differences.

Shared by the workflow, which fills the table from the programs' reports and tables, and by the
campaign generator, which fills it from the energies it wrote itself.
"""
import csv
import statistics
from decimal import Decimal

COLUMNS = [
    "crystal", "sites", "check_status", "finding_codes", "outcome", "reason",
    "holes_pairs", "holes_mean_meV", "holes_sd_meV", "holes_min_meV", "holes_max_meV",
    "electrons_pairs", "electrons_mean_meV", "electrons_sd_meV", "electrons_min_meV",
    "electrons_max_meV",
]

SIX_PLACES = Decimal("0.000001")


def pair_statistics(values):
    """The pair count, mean, population standard deviation, minimum and maximum of `values`.

    `values` are the texts of the EH or EL values as the programs print them ("%.6f"); they are
    read as exact decimals, so mean and deviation are computed exactly and rounded half to even
    to six places. No value gives a count of 0 and empty fields.
    Example: ["-1.000000", "1.000000"] -> ["2", "0.000000", "1.000000", "-1.000000", "1.000000"]
    """
    numbers = [Decimal(v) for v in values]
    if not numbers:
        return ["0", "", "", "", ""]
    mean = statistics.mean(numbers)
    deviation = statistics.pstdev(numbers, mean)
    return [str(len(numbers))] + [
        str(x.quantize(SIX_PLACES)) for x in (mean, deviation, min(numbers), max(numbers))
    ]


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
