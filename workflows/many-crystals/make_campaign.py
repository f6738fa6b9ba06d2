#!/usr/bin/env python3
"""Writes a test campaign of small crystals and the table the many-crystals workflow must give.

    make_campaign.py ROOT N [--seed S] [--expected TABLE.csv]

ROOT/crystal-NNNNN/ holds, for each of 2 to 4 sites, Gaussian-style outputs of the anion,
cation and neutral molecule that check_inter_ener takes as clean, with int_ener_files.dat and
neighbor.dat. Some crystals are broken on purpose, each kind at least once when N allows:
a missing output, a job cut off after its energy, anion and cation exchanged in the batch
list, a neighbour table whose site count disagrees with the batch list, a directory in the
place of the table EH01.dat, and an energy field "nan". The same seed gives the same campaign.
The expected table is what the workflow must write with its default settings: each broken
crystal refused with site_energies' reason, and the disorder of the others computed from the
energies written here, as site_energies computes it (hartree x 27211.4), without running it.
"""
import argparse
import math
import os
import random
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import campaign_table  # noqa: E402

HARTREE_TO_MEV = 27211.4
ROLES = ("anion", "cation", "neutral")
CHARGES = {"anion": -1, "cation": 1, "neutral": 0}
BROKEN_KINDS = ("missing-file", "cut-off", "swapped", "site-count", "table-blocked", "nan-energy")

# Small closed-shell molecules: formula, atoms (symbol, x, y, z in angstrom), and a neutral
# energy in hartree around which each site's energy is drawn.
MOLECULES = [
    ("C2H4", [("C", 0.0, 0.0, 0.6695), ("C", 0.0, 0.0, -0.6695),
              ("H", 0.0, 0.9289, 1.2321), ("H", 0.0, -0.9289, 1.2321),
              ("H", 0.0, 0.9289, -1.2321), ("H", 0.0, -0.9289, -1.2321)], -78.587),
    ("C2H2", [("C", 0.0, 0.0, 0.6013), ("C", 0.0, 0.0, -0.6013),
              ("H", 0.0, 0.0, 1.6644), ("H", 0.0, 0.0, -1.6644)], -77.327),
    ("C2H6", [("C", 0.0, 0.0, 0.7650), ("C", 0.0, 0.0, -0.7650),
              ("H", 1.0185, 0.0, 1.1617), ("H", -0.5092, 0.8821, 1.1617),
              ("H", -0.5092, -0.8821, 1.1617), ("H", -1.0185, 0.0, -1.1617),
              ("H", 0.5092, 0.8821, -1.1617), ("H", 0.5092, -0.8821, -1.1617)], -79.830),
]


def archive_formula(formula, charge):
    """The formula as the archive entry labels it: "C2H4", "C2H4(1+,2)", "C2H4(1-,2)"."""
    if charge == 0:
        return formula
    return "%s(%d%s,2)" % (formula, abs(charge), "+" if charge > 0 else "-")


def wrapped(entry, width=70):
    """The archive entry as the engine prints it: lines of `width` characters after a blank."""
    return "".join(" %s\n" % entry[i:i + width] for i in range(0, len(entry), width))


def engine_output(name, role, molecule, energy_text, cut_off):
    """The text of one output: head, one energy, and, unless cut off, archive and termination."""
    formula, atoms, _ = molecule
    charge = CHARGES[role]
    multiplicity = 1 if charge == 0 else 2
    method = ("R" if charge == 0 else "U") + "B3LYP"
    title = "campaign test molecule %s, %s state" % (formula, role)
    rule = " " + "-" * 52 + "\n"
    text = [" Entering Gaussian System, Link 0=g16\n", " Input=%s.com\n" % name,
            " Output=%s.log\n" % name, rule, " Generated output of a test campaign\n", rule,
            " %%chk=%s.chk\n" % name, " ----------------\n", " #p B3LYP/6-31G(d)\n",
            " ----------------\n\n", " " + "-" * len(title) + "\n", " %s\n" % title,
            " " + "-" * len(title) + "\n", " Symbolic Z-matrix:\n",
            " Charge = %2d Multiplicity = %d\n" % (charge, multiplicity)]
    text += [" %-2s %15.8f %15.8f %15.8f\n" % atom for atom in atoms]
    text += ["\n", " NAtoms=%7d NQM=%7d\n" % (len(atoms), len(atoms)), "\n",
             " SCF Done:  E(%s) =  %s     A.U. after   11 cycles\n" % (method, energy_text)]
    if cut_off:
        return "".join(text + [" Population analysis using the SCF density.\n"])
    geometry = "\\".join("%s,%.7f,%.7f,%.7f" % atom for atom in atoms)
    entry = ("1\\1\\GINC-CAMPAIGN\\SP\\%s\\6-31G(d)\\%s\\TEST\\01-Jan-2026\\0\\\\#p B3LYP/6-31G(d)"
             "\\\\%s\\\\%d,%d\\%s\\\\Version=ES64L-G16RevC.01\\State=%d-A\\HF=%s\\RMSD=1.0e-09"
             "\\PG=C01 [X(%s)]\\\\@" % (method, archive_formula(formula, charge), title, charge,
                                        multiplicity, geometry, multiplicity,
                                        energy_text[:-2], formula))
    text += ["\n", wrapped(entry), "\n",
             " Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.\n"]
    return "".join(text)


def neighbour_lists(rng, sites):
    """Mutual neighbour lists of the sites (0-based): every pair, or a ring of them."""
    if sites <= 3 or rng.random() < 0.5:
        return [[k for k in range(sites) if k != i] for i in range(sites)]
    return [[(i - 1) % sites, (i + 1) % sites] for i in range(sites)]


def write_text(path, text):
    with open(path, "w") as out:
        out.write(text)


def make_crystal(rng, directory, broken):
    """Writes one crystal and returns its expected row."""
    os.makedirs(directory)
    molecule = rng.choice(MOLECULES)
    sites = rng.randint(2, 4)
    # Energies in units of 1e-7 hartree, so that the energy line and the archive agree.
    texts = []
    for _ in range(sites):
        neutral = round(molecule[2] * 1e7) + rng.randint(-20000, 20000)
        units = {"neutral": neutral, "cation": neutral + rng.randint(3300000, 3700000),
                 "anion": neutral + rng.randint(-300000, 300000)}
        texts.append({role: "%.9f" % (units[role] / 1e7) for role in ROLES})
    names = [{role: "site%d_%s.log" % (s + 1, role) for role in ROLES} for s in range(sites)]
    # The output that a broken crystal has wrong: its site and role.
    bad_site, bad_role = rng.randrange(sites), rng.choice(ROLES)
    if broken in ("cut-off", "nan-energy"):
        bad_role = "neutral"
    if broken == "nan-energy":
        texts[bad_site]["neutral"] = "nan"
    for s in range(sites):
        for role in ROLES:
            cut_off = broken == "cut-off" and (s, role) == (bad_site, bad_role)
            write_text(os.path.join(directory, names[s][role]),
                       engine_output(names[s][role][:-4], role, molecule, texts[s][role], cut_off))
    columns = ["cation", "anion", "neutral"] if broken == "swapped" else list(ROLES)
    write_text(os.path.join(directory, "int_ener_files.dat"),
               "%d\n" % sites + "".join(" ".join(n[c] for c in columns) + "\n" for n in names))
    lists = neighbour_lists(rng, sites)
    stated_sites = sites + 1 if broken == "site-count" else sites
    numbers = ["# neighbour list of a generated cell", "# site, count, neighbours", stated_sites]
    for i, neighbours in enumerate(lists):
        numbers += [i + 1, len(neighbours)] + [k + 1 for k in neighbours]
    write_text(os.path.join(directory, "neighbor.dat"), "".join("%s\n" % n for n in numbers))
    if broken == "missing-file":
        os.remove(os.path.join(directory, names[bad_site][bad_role]))
    if broken == "table-blocked":
        os.mkdir(os.path.join(directory, "EH01.dat"))
    return expected_row(os.path.basename(directory), broken, texts, lists,
                        names[bad_site][bad_role], bad_site + 1)


def disorder(energies, lists):
    """A carrier's disorder columns from its site energies (meV) and the neighbour lists, as
    site_energies computes them, step for step, so that every double is the same."""
    n = len(energies)
    mean = 0.0
    for e in energies:
        mean += e
    mean /= n
    spread = 0.0
    for e in energies:
        spread += (e - mean) * (e - mean)
    sigma_site = math.sqrt(spread / n)
    squares, pairs = 0.0, 0
    for i, neighbours in enumerate(lists):
        for k in neighbours:
            squares += (energies[k] - energies[i]) * (energies[k] - energies[i])
            pairs += 1
    sigma_delta = math.sqrt(squares / pairs) if pairs else 0.0
    ratio = sigma_delta * sigma_delta / (2.0 * sigma_site * sigma_site) if sigma_site > 0 else None
    numbers = [campaign_table.shortest_number(x) for x in
               (sigma_site, sigma_delta, sigma_delta / math.sqrt(2.0))]
    return numbers + ["" if ratio is None else campaign_table.shortest_number(ratio), str(n),
                      str(pairs)]


def refusal(broken, sites, file_name, site):
    """The codes and the reason site_energies gives for a crystal of the kind `broken`,
    `file_name` being the output concerned and `site` its site."""
    place = "(site %d, %s)" % (site, file_name)
    return {
        "table-blocked": ("", "cannot write EH01.dat: it is a directory"),
        "cut-off": ("not-normal-termination",
                    "not-normal-termination %s: no normal termination (cut off, or still "
                    "running): the last SCF energy it reached is taken (--force writes it)" % place),
        "swapped": ("anion-cation-swapped",
                    "anion-cation-swapped (site 1, site1_cation.log): the anion column holds "
                    "charge +1 and the cation column site1_anion.log charge -1: the site's "
                    "electron and hole energies are exchanged (--force writes it)"),
        "missing-file": ("missing-file", 'missing-file %s: get_inter_ener stops with "Failed '
                         'to open input file: %s"' % (place, file_name)),
        "site-count": ("neighbor-table-refused",
                       'neighbor-table-refused (neighbor.dat): uc_U.dat is written, then '
                       'get_inter_ener stops with "Number of molecules (%d:%d) is not '
                       'compatible! Please check files neighbor.dat and int_ener_files.dat"'
                       % (sites + 1, sites)),
        "nan-energy": ("energy-not-finite",
                       'energy-not-finite %s: the energy of the last "SCF Done" line reads as '
                       'nan: the tables get values that are no numbers (" SCF Done:  E(RB3LYP) '
                       '=  nan     A.U. after   11 cycles") (--force writes it)' % place),
    }[broken]


def expected_row(crystal, broken, texts, lists, file_name, site):
    """The crystal's row of the campaign table."""
    row = dict.fromkeys(campaign_table.COLUMNS, "")
    row["crystal"] = crystal
    if broken:
        codes, reason = refusal(broken, len(texts), file_name, site)
        row.update(outcome="refused", trusted="no", reason=reason, finding_codes=codes)
        return row
    row.update(outcome="written", trusted="yes")
    # The site energies in meV, as the program computes them from the hartree it reads.
    mev = {role: [float(t[role]) * HARTREE_TO_MEV for t in texts] for role in ROLES}
    for carrier, charged in (("hole", "cation"), ("electron", "anion")):
        energies = [c - n for c, n in zip(mev[charged], mev["neutral"])]
        for key, value in zip(campaign_table.DISORDER_KEYS, disorder(energies, lists)):
            row["%s_%s" % (carrier, key)] = value
    return row


def broken_kinds(rng, count, share):
    """The kind of each crystal (None when whole): about `share` broken, every kind once."""
    broken = max(len(BROKEN_KINDS), math.ceil(count * share)) if count >= 2 * len(BROKEN_KINDS) \
        else min(count, len(BROKEN_KINDS))
    kinds = [None] * count
    for n, index in enumerate(rng.sample(range(count), broken)):
        kinds[index] = BROKEN_KINDS[n % len(BROKEN_KINDS)]
    return kinds


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("root", help="directory to create, one subdirectory per crystal")
    parser.add_argument("count", type=int, help="number of crystals")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--broken-share", type=float, default=0.2)
    parser.add_argument("--expected", help="where to write the expected campaign table")
    args = parser.parse_args()
    rng = random.Random(args.seed)
    os.makedirs(args.root)
    rows = [make_crystal(rng, os.path.join(args.root, "crystal-%05d" % (n + 1)), kind)
            for n, kind in enumerate(broken_kinds(rng, args.count, args.broken_share))]
    if args.expected:
        campaign_table.write_table(args.expected, rows)


if __name__ == "__main__":
    main()
