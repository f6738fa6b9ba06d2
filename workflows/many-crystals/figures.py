#!/usr/bin/env python3
"""Figures of a campaign: its crystals' energetic disorder, and one crystal's site energies.

    figures.py disorder TABLE.csv OUT_DIR [--all]
    figures.py crystal JSONL NAME OUT_STEM

`disorder` writes OUT_DIR/disorder.png, .svg and .csv from the campaign table: the hole and
electron sigma_site of each trusted crystal (of each written one with --all). `crystal` writes
OUT_STEM.png, .svg and .csv from a batch's `site_energies --json` lines: the site-energy diagram
of the crystal NAME. Each figure's three files appear together or not at all, and a rerun gives
the same SVG and CSV bytes. A crystal that cannot be drawn ends with status 1 and one line on
standard error.
"""
import csv
import json
import math
import os
import sys

import matplotlib

matplotlib.use("Agg")
matplotlib.rcParams["svg.hashsalt"] = "site-energies"
import matplotlib.pyplot as plt  # noqa: E402
import numpy  # noqa: E402
from matplotlib.ticker import MaxNLocator  # noqa: E402

SAVE = {"png": {"Software": None}, "svg": {"Date": None}}
DPI = 150
CARRIERS = ("hole", "electron")


class Refusal(Exception):
    """A figure that cannot be drawn: its message, said after `figures.py: `."""


def shown(name, limit=None):
    """`name` on one line, for a title or a message: control characters as \\xHH, and cut to
    `limit` characters with an ellipsis. Example: shown("a\\nb") -> "a\\x0ab"."""
    text = "".join("\\x%02x" % ord(c) if ord(c) < 32 or ord(c) == 127 else c for c in name)
    return text if limit is None or len(text) <= limit else text[:limit - 1] + "\u2026"


def counted(number, noun):
    """`number` and `noun`, plural but for 1. Example: counted(2, "row") -> "2 rows"."""
    return "%d %s%s" % (number, noun, "" if number == 1 else "s")


def write_together(stem, fig, header, rows):
    """Writes STEM.png, STEM.svg (the figure `fig`) and STEM.csv (`header`, then `rows`), each
    first under a temporary name beside it, renamed only once all three are written; a failure
    leaves none of them behind. Closes `fig`."""
    temps = {ext: "%s.%s.%d.tmp" % (stem, ext, os.getpid()) for ext in ("png", "svg", "csv")}
    try:
        for ext in SAVE:
            fig.savefig(temps[ext], format=ext, dpi=DPI, metadata=SAVE[ext])
        with open(temps["csv"], "w", newline="", encoding="utf-8",
                  errors="surrogateescape") as out:
            csv.writer(out, lineterminator="\n").writerows([header] + rows)
        for ext, temp in temps.items():
            os.replace(temp, "%s.%s" % (stem, ext))
    finally:
        plt.close(fig)
        for temp in temps.values():
            if os.path.exists(temp):
                os.remove(temp)


def disorder_points(table_path, everything):
    """The rows of the campaign table to show and the table's row count. A row is shown when
    both sigma_site values are filled and it is trusted ("yes"), or with `everything` when it
    is written. Each point is (crystal, hole text, electron text, trusted), texts as in the
    table."""
    with open(table_path, newline="", encoding="utf-8", errors="surrogateescape") as source:
        reader = csv.DictReader(source)
        rows = list(reader)
    needed = ["crystal", "outcome", "trusted"] + [c + "_sigma_site_meV" for c in CARRIERS]
    missing = [column for column in needed if column not in (reader.fieldnames or [])]
    if missing:
        raise Refusal("%s: no column %s" % (shown(table_path), ", ".join(missing)))
    points = []
    for row in rows:
        values = [row[c + "_sigma_site_meV"] for c in CARRIERS]
        wanted = row["outcome"] == "written" if everything else row["trusted"] == "yes"
        if wanted and all(values):
            points.append((row["crystal"], values[0], values[1], row["trusted"] == "yes"))
    return points, len(rows)


def disorder(table_path, out_dir, everything=False):
    """Writes OUT_DIR/disorder.{png,svg,csv} from the campaign table `table_path`: hole against
    electron sigma_site, one point per crystal shown (see disorder_points), with the histogram
    of each above and beside; the CSV lists the points shown in table order, values exactly as
    the table has them. No crystal to show gives a figure that says so."""
    points, total = disorder_points(table_path, everything)
    try:
        x, y = ([float(p[i]) for p in points] for i in (1, 2))
        if not all(map(math.isfinite, x + y)):
            raise ValueError("not finite")
    except ValueError as error:
        raise Refusal("%s: a sigma_site that is not a number: %s" % (shown(table_path), error))
    fig = plt.figure(figsize=(7.5, 7))
    grid = fig.add_gridspec(2, 2, width_ratios=(4, 1), height_ratios=(1, 4), hspace=0.05,
                            wspace=0.05, top=0.9)
    ax = fig.add_subplot(grid[1, 0])
    top, side = fig.add_subplot(grid[0, 0], sharex=ax), fig.add_subplot(grid[1, 1], sharey=ax)
    corner = fig.add_subplot(grid[0, 1])
    corner.axis("off")
    top.tick_params(labelbottom=False)
    side.tick_params(labelleft=False)
    for axis, label, ticks in ((top.yaxis, top.set_ylabel, 4), (side.xaxis, side.set_xlabel, 2)):
        axis.set_major_locator(MaxNLocator(ticks, integer=True))
        label("crystals")
    ax.set_xlabel("hole \u03c3$_{site}$ (meV)")
    ax.set_ylabel("electron \u03c3$_{site}$ (meV)")
    kind = counted(len(points), "written crystal") + ", trusted or not," if everything else \
        counted(len(points), "trusted crystal")
    fig.suptitle("Site-energy disorder: %s of %s in %s" % (kind, counted(total, "row"), shown(
        os.path.basename(table_path), 40)), parse_math=False)
    if not points:
        ax.text(0.5, 0.5, "no written crystal" if everything else "no trusted crystal",
                ha="center", va="center", transform=ax.transAxes, fontsize=14)
        for axes in (ax, top, side):
            axes.tick_params(left=False, bottom=False, labelleft=False, labelbottom=False)
    else:
        many = len(points) > 1000
        style = dict(ls="", marker="o", ms=1.5 if many else 4, alpha=0.3 if many else 0.8,
                     rasterized=many, mec="none")
        # Trusted crystals at the foot of the histograms and above the others in the plot.
        groups = []
        for trusted, colour, label in ((True, "C0", "trusted"), (False, "C3", "not trusted")):
            chosen = [i for i, p in enumerate(points) if p[3] == trusted]
            if chosen:
                groups.append(([x[i] for i in chosen], [y[i] for i in chosen], colour))
                ax.plot(groups[-1][0], groups[-1][1], color=colour, zorder=3 if trusted else 2,
                        label="%s (%d)" % (label, len(chosen)), **style)
        low, high = min(x + y), max(x + y)
        ax.plot([low, high], [low, high], color="0.6", lw=0.8, ls="--", zorder=1,
                label="equal disorder")
        corner.legend(*ax.get_legend_handles_labels(), loc="center", fontsize=8,
                      markerscale=4 if many else 1)
        bins = min(80, max(10, int(len(points) ** 0.5)))
        xs, ys, colours = zip(*groups)
        top.hist(xs, bins=bins, color=colours, stacked=True)
        side.hist(ys, bins=bins, color=colours, stacked=True, orientation="horizontal")
    os.makedirs(out_dir, exist_ok=True)
    write_together(os.path.join(out_dir, "disorder"), fig,
                   ["crystal"] + [c + "_sigma_site_meV" for c in CARRIERS],
                   [list(p[:3]) for p in points])


def find_crystal(jsonl_path, name):
    """The JSON object of the crystal `name` in the JSON Lines file (the first line for it),
    numbers kept as their texts. Raises Refusal when it is not there or was not written."""
    unread = 0
    with open(jsonl_path, encoding="utf-8", errors="surrogateescape") as source:
        for line in source:
            try:
                result = json.loads(line, parse_float=str, parse_int=str, parse_constant=str)
            except ValueError:
                unread += line.strip() != ""
                continue
            if isinstance(result, dict) and result.get("crystal") == name:
                if result.get("written") is not True:
                    raise Refusal("%s: not written (refused: %s)" % (
                        shown(name), shown(json.dumps(result.get("refused")))))
                return result
    raise Refusal("%s: not in %s%s" % (shown(name), shown(jsonl_path), unread and
                  " (%d lines that are not JSON skipped)" % unread or ""))


def crystal(jsonl_path, name, out_stem):
    """Writes OUT_STEM.{png,svg,csv} for the crystal `name` of the JSON Lines file: a panel for
    holes and one for electrons, each site a level at its relative site energy, each unordered
    pair of distinct neighbouring sites a line between their levels labelled with
    E(right) - E(left) from the pair listed first (self-images and repeats not drawn). The CSV
    has the sites' relative energies, then every pair entry, as the JSON texts."""
    result = find_crystal(jsonl_path, name)
    sites, pairs = result.get("sites") or [], result.get("pairs") or []
    text = lambda v: "" if v is None else str(v)  # noqa: E731
    rows = [["site", text(s.get("site")), ""] + [text(s.get(c + "_relative_meV"))
                                                  for c in CARRIERS] for s in sites]
    rows += [["pair", text(p.get("site")), text(p.get("neighbor"))] +
             [text(p.get(c + "_meV")) for c in CARRIERS] for p in pairs]
    fig, axes = plt.subplots(1, 2, figsize=(max(8, min(20, 3 + 1.2 * len(sites))), 5.5))
    fig.suptitle("Site energies of %s" % shown(name, 70), parse_math=False)
    self_images = sum(1 for p in pairs if p.get("site") == p.get("neighbor"))
    fig.text(0.5, 0.01, "%s; lines join neighbouring sites, labelled E(right) \u2212 E(left) "
             "in meV; %s, %d of them a site's own image" % (counted(len(sites), "site"), counted(
                 len(pairs), "listed pair"), self_images), ha="center", fontsize=8)
    for ax, carrier in zip(axes, CARRIERS):
        level = {}
        for s in sites:
            if s.get(carrier + "_relative_meV") is not None:
                level[int(s["site"])] = float(s[carrier + "_relative_meV"])
        # A pair of sites further apart bows upwards, clear of the levels between them.
        spread = (max(level.values()) - min(level.values()) if level else 0) or 1
        t = numpy.linspace(0, 1, 31)
        drawn = set()
        for p in pairs:
            a, b = int(p["site"]), int(p["neighbor"])
            lo, hi = min(a, b), max(a, b)
            if a == b or (lo, hi) in drawn or not {lo, hi} <= set(level) or \
                    p.get(carrier + "_meV") is None:
                continue
            drawn.add((lo, hi))
            rise = float(p[carrier + "_meV"]) * (1 if a < b else -1)
            bow = 0.2 * spread * (hi - lo - 1)
            xs = lo + 0.3 + (hi - lo - 0.6) * t
            ys = level[lo] + (level[hi] - level[lo]) * t + 4 * bow * t * (1 - t)
            ax.plot(xs, ys, color="0.55", lw=0.8)
            ax.text(xs[15], ys[15], "%+.1f" % rise if abs(rise) >= 1
                    else "%+.2f" % rise, fontsize=8, ha="center", va="center",
                    bbox=dict(fc="white", ec="none", pad=0.5))
        for site, energy in level.items():
            ax.hlines(energy, site - 0.3, site + 0.3, color="C0" if carrier == "hole" else "C3",
                      lw=2.5)
        ax.set_xticks(sorted(level))
        ax.set_xlim(min(level, default=1) - 0.7, max(level, default=1) + 0.7)
        ax.set_title(carrier + "s")
        ax.set_xlabel("site")
        ax.set_ylabel("relative site energy (meV)")
    fig.tight_layout(rect=(0, 0.04, 1, 1))
    os.makedirs(os.path.dirname(out_stem) or ".", exist_ok=True)
    write_together(out_stem, fig, ["kind", "site", "neighbor", "hole_meV", "electron_meV"], rows)


def main(args):
    """Runs the command `args` (sys.argv[1:]); returns the exit status."""
    if len(args) in (3, 4) and args[0] == "disorder" and args[3:] in ([], ["--all"]):
        command = lambda: disorder(args[1], args[2], args[3:] == ["--all"])  # noqa: E731
    elif len(args) == 4 and args[0] == "crystal":
        command = lambda: crystal(*args[1:])  # noqa: E731
    else:
        sys.stderr.write(__doc__.split("\n\n")[1] + "\n")
        return 2
    try:
        command()
    except (Refusal, OSError) as error:
        sys.stderr.write("figures.py: %s\n" % error)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
