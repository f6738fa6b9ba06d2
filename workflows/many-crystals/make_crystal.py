#!/usr/bin/python3
"""Makes a crystal directory of the campaign from one structure file.
    make_crystal.py [--configfile FILE] [--config KEY=VALUE ...] STRUCTURE CRYSTAL_DIR

STRUCTURE is one set of atoms with its cell, in any format ASE reads (molecules.py). The
settings are those of the campaign, read as Snakemake reads them: the workflow's config.yaml,
then each --configfile, then each --config KEY=VALUE. CRYSTAL_DIR (created when absent) gets:
  siteNNN_STATE.SUFFIX  the input of each site's anion, cation and neutral run for qc_engine
  int_ener_files.dat    (or the campaign's batch_list) naming the outputs those runs write
  neighbor.dat          each site's neighbours within neighbor_distance Å, images included
  crystal.json          what it was made from: the structure, its state, the settings, the
                        sites (formula, atoms of the structure) and the runs
Only files whose text changes are written, so a run whose input is unchanged is not redone by
the campaign; a run whose input changes loses its output, and the runs of sites no longer
there are removed with their files. A structure that gives no sites writes nothing.
Status: 0 done, 1 the structure or a setting refused (the reason on standard error), 2 usage.
"""
import argparse
import json
import os
import sys

import yaml

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import crystal_batches  # noqa: E402
import engine_inputs  # noqa: E402

RECORD = "crystal.json"
# The settings a crystal is made with: when one changes, the campaign makes the crystal again.
SETTINGS = ("qc_engine", "qc_method", "qc_basis", "qc_keywords", "neighbor_distance",
            "batch_list")


class SettingError(Exception):
    """A setting make_crystal cannot use: its message says why."""


def crystal_settings(config):
    """The settings of `config` (the campaign's configuration) that make a crystal, checked.
    Raises SettingError for an unknown engine, a method or basis that is empty or not one
    word, a line break in the keywords, or a distance that is not a positive number."""
    settings = {key: config.get(key) for key in SETTINGS}
    if settings["qc_engine"] not in engine_inputs.ENGINES:
        raise SettingError("qc_engine %r is none of %s" % (settings["qc_engine"],
                                                           ", ".join(engine_inputs.ENGINES)))
    for key in ("qc_method", "qc_basis"):
        value = str(settings[key] or "")
        if len(value.split()) != 1:
            raise SettingError("%s %r is not one word" % (key, value))
        settings[key] = value
    settings["qc_keywords"] = str(settings["qc_keywords"] or "")
    if "\n" in settings["qc_keywords"]:
        raise SettingError("qc_keywords holds a line break; separate lines with ';'")
    try:
        distance = float(settings["neighbor_distance"])
    except (TypeError, ValueError):
        distance = 0.0
    if not distance > 0.0 or distance == float("inf"):
        raise SettingError("neighbor_distance %r is not a positive number of Å"
                           % settings["neighbor_distance"])
    settings["neighbor_distance"] = distance
    settings["batch_list"] = str(settings["batch_list"])
    return settings


def run_files(stem, engine):
    """The files of the run `stem` in its crystal: input, output, the campaign's status of
    the run, and the output of a run that failed."""
    suffixes = engine_inputs.ENGINES[engine]
    return (stem + suffixes.input_suffix, stem + suffixes.output_suffix, stem + ".status",
            stem + ".failed" + suffixes.output_suffix)


def crystal_texts(structure, settings):
    """Every file of the crystal made from the file `structure`: ({name: text}, record).
    Raises molecules.StructureError when the structure gives no sites."""
    import molecules  # loads ASE
    atoms = molecules.read_structure(structure)
    sites = molecules.find_molecules(atoms)
    neighbors = molecules.find_neighbors(atoms, sites, settings["neighbor_distance"])
    engine = engine_inputs.ENGINES[settings["qc_engine"]]
    width = max(3, len(str(len(sites))))
    texts, runs, record_sites, job_lines = {}, [], [], []
    for number, (members, positions) in enumerate(sites, 1):
        symbols = [atoms[m].symbol for m in members]
        formula = atoms[members].get_chemical_formula(mode="hill")
        electrons = int(atoms.numbers[members].sum())
        outputs = []
        for state, charge in engine_inputs.STATES:
            stem = "site%0*d_%s" % (width, number, state)
            title = "site %d %s %s" % (number, state, formula)
            texts[stem + engine.input_suffix] = engine.write(
                stem, title, charge, engine_inputs.multiplicity(electrons - charge), symbols,
                positions, settings["qc_method"], settings["qc_basis"], settings["qc_keywords"])
            runs.append(stem)
            outputs.append(stem + engine.output_suffix)
        job_lines.append(" ".join(outputs) + "\n")
        record_sites.append(dict(formula=formula, atoms=[int(m) + 1 for m in members]))
    texts[settings["batch_list"]] = "%d\n%s" % (len(sites), "".join(job_lines))
    table = ["# neighbours of %s: closest atoms within %g A, periodic images included\n"
             % (os.path.basename(structure), settings["neighbor_distance"]),
             "# site / neighbour count / neighbours (1-based)\n", "%d\n" % len(sites)]
    for number, listed in enumerate(neighbors, 1):
        table += ["%d\n%d\n" % (number, len(listed))] + ["%d\n" % (t + 1) for t, _ in listed]
    texts["neighbor.dat"] = "".join(table)
    record = dict(structure=os.path.abspath(structure),
                  structure_state=crystal_batches.file_state(structure), settings=settings,
                  sites=record_sites, runs=runs,
                  neighbor_entries=sum(len(listed) for listed in neighbors))
    return texts, record


def read_record(directory):
    """The record of the crystal in `directory` (the dict make_crystal wrote), or None for a
    crystal not made by make_crystal."""
    try:
        with open(os.path.join(os.fsdecode(directory), RECORD)) as source:
            return json.load(source)
    except (OSError, ValueError):
        return None


def is_current(record, settings):
    """Whether the crystal of `record` was made with `settings` from its structure as the
    structure is now."""
    return (record["settings"] == settings and
            crystal_batches.file_state(record["structure"]) == record["structure_state"])


def remove_files(directory, names):
    for name in names:
        try:
            os.remove(os.path.join(directory, name))
        except FileNotFoundError:
            pass


def make_crystal(structure, directory, settings):
    """Writes the crystal of the file `structure` into `directory` with `settings` (from
    crystal_settings), rewriting only what changes. Returns (record, inputs written).
    Raises molecules.StructureError, before writing anything, when the structure gives no
    sites. Example: make_crystal("cell.cif", "crystals/cell", settings) -> ({...}, 6)"""
    texts, record = crystal_texts(structure, settings)
    old = read_record(directory)
    os.makedirs(directory, exist_ok=True)
    written = 0
    for name, text in texts.items():
        path = os.path.join(directory, name)
        if crystal_batches.write_if_changed(path, text) and name.endswith(
                engine_inputs.ENGINES[settings["qc_engine"]].input_suffix):
            # A new input: whatever its run gave before is stale.
            remove_files(directory, run_files(name.rsplit(".", 1)[0], settings["qc_engine"])[1:])
            written += 1
    if old is not None:
        current = {(stem, settings["qc_engine"]) for stem in record["runs"]}
        for stem in old["runs"]:
            if (stem, old["settings"]["qc_engine"]) not in current:
                remove_files(directory, run_files(stem, old["settings"]["qc_engine"]))
    crystal_batches.write_if_changed(os.path.join(directory, RECORD),
                                     json.dumps(record, indent=1) + "\n")
    return record, written


def refresh_crystals(root, settings):
    """Makes again, with `settings`, every crystal under `root` that make_crystal made with
    other settings or from its structure as it was before. Returns the names made again.
    Raises SettingError when such a crystal's structure cannot be read or gives no sites."""
    import molecules
    made = []
    for name in crystal_batches.crystal_names(root):
        directory = os.path.join(os.fsencode(root), name)
        record = read_record(directory)
        if record is None or is_current(record, settings):
            continue
        try:
            make_crystal(record["structure"], os.fsdecode(directory), settings)
        except (OSError, molecules.StructureError) as error:
            raise SettingError("crystal %s, made from %s: %s" % (
                os.fsdecode(name), record["structure"], error))
        made.append(os.fsdecode(name))
    return made


def load_config(configfiles, pairs):
    """The campaign's configuration as Snakemake builds it: the workflow's config.yaml, each
    of `configfiles`, each KEY=VALUE of `pairs` (VALUE read as YAML)."""
    config = {}
    for path in [os.path.join(os.path.dirname(os.path.abspath(__file__)), "config.yaml")] + \
            configfiles:
        with open(path) as source:
            config.update(yaml.safe_load(source) or {})
    for pair in pairs:
        key, equals, value = pair.partition("=")
        if not equals:
            raise SettingError("--config %r is not KEY=VALUE" % pair)
        config[key] = yaml.safe_load(value) if value else ""
    return config


def main():
    parser = argparse.ArgumentParser(
        prog="make_crystal", description="Writes a crystal directory of the campaign (the "
        "engine's inputs of every site's anion, cation and neutral runs, the batch list and "
        "neighbor.dat) from one structure file with its cell.")
    parser.add_argument("structure", metavar="STRUCTURE")
    parser.add_argument("directory", metavar="CRYSTAL_DIR")
    parser.add_argument("--configfile", action="append", default=[], metavar="FILE")
    parser.add_argument("--config", nargs="+", action="extend", default=[],
                        metavar="KEY=VALUE")
    arguments = parser.parse_args()
    import molecules
    try:
        settings = crystal_settings(load_config(arguments.configfile, arguments.config))
        record, written = make_crystal(arguments.structure, arguments.directory, settings)
    except (SettingError, OSError, yaml.YAMLError) as error:
        sys.exit("make_crystal: %s" % error)
    except molecules.StructureError as error:
        sys.exit("make_crystal: %s: %s" % (arguments.structure, error))
    formulas = {}
    for site in record["sites"]:
        formulas[site["formula"]] = formulas.get(site["formula"], 0) + 1
    print("%s: %d sites (%s), %d %s inputs (%d written), %d neighbours within %g A" % (
        arguments.directory, len(record["sites"]),
        ", ".join("%d %s" % (n, f) for f, n in formulas.items()), len(record["runs"]),
        settings["qc_engine"], written, record["neighbor_entries"],
        settings["neighbor_distance"]))


if __name__ == "__main__":
    main()
