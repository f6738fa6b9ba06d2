"""The input of one engine run, for make_crystal.py: one writer per engine, each following
that engine's documented input format, and the engines' file names and usual commands.

Every input is a single point of one molecule in one state, at the method and basis asked, in
Cartesian coordinates in Å exactly as given, named by the run's `name` where the engine names
its files after the job, described by a `title` of letters, digits and blanks (which every
engine takes, Gaussian's title section included), with symmetry off so that the engine neither
reorients nor re-centres the molecule. The method is a functional (b3lyp, pbe0, ...) or "hf";
an open-shell state is computed unrestricted (each engine's default for a multiplicity above 1,
stated where the engine wants it stated). The extra keywords go where each engine reads
options: Gaussian's route, ORCA's "!" line, Q-Chem's $rem section (one "NAME VALUE" a line,
separated by ";"), NWChem's theory block (one directive a line, separated by ";").
"""
from collections import namedtuple

# The three runs of a site: the state's name, its charge relative to the neutral molecule.
STATES = (("anion", -1), ("cation", 1), ("neutral", 0))

Engine = namedtuple("Engine", "input_suffix output_suffix command write")


def multiplicity(electrons):
    """The lowest spin multiplicity of `electrons`: 1 when even (closed shell), 2 when odd."""
    return 1 + electrons % 2


def coordinates(symbols, positions, indent=""):
    """One "SYMBOL X Y Z" line an atom, in Å with 10 decimals (far below any change the
    engines' own precision would see)."""
    return "".join("%s%-2s %17.10f %17.10f %17.10f\n" % ((indent, s) + tuple(p))
                   for s, p in zip(symbols, positions))


def option_lines(keywords, indent):
    """The keywords of an engine that takes one option a line: ";" separates lines."""
    return "".join(indent + part.strip() + "\n" for part in keywords.split(";") if part.strip())


def gaussian(name, title, charge, mult, symbols, positions, method, basis, keywords):
    """Route, blank line, title, blank line, charge and multiplicity, the atoms, a blank line
    ending the molecule. NoSymm keeps the input orientation."""
    route = " ".join(w for w in ("#P", "%s/%s" % (method.upper(), basis), "NoSymm", keywords) if w)
    return "%s\n\n%s\n\n%d %d\n%s\n" % (route, title, charge, mult,
                                       coordinates(symbols, positions))


def orca(name, title, charge, mult, symbols, positions, method, basis, keywords):
    """The "!" line of simple keywords, then the atoms between "* xyz CHARGE MULT" and "*".
    ORCA uses no symmetry unless asked."""
    keys = " ".join(w for w in (method.upper() if method.lower() == "hf" else method, basis,
                                keywords) if w)
    return "# %s\n! %s\n* xyz %d %d\n%s*\n" % (title, keys, charge, mult,
                                              coordinates(symbols, positions))


def qchem(name, title, charge, mult, symbols, positions, method, basis, keywords):
    """$comment, $molecule (charge, multiplicity, atoms) and $rem sections, each ending in
    $end. SYM_IGNORE keeps the input orientation."""
    rem = "".join("   %-13s %s\n" % pair for pair in (
        ("JOBTYPE", "sp"), ("METHOD", method), ("BASIS", basis), ("SYM_IGNORE", "true"),
        ("UNRESTRICTED", "true" if mult > 1 else "false")))
    return ("$comment\n%s\n$end\n\n$molecule\n%d %d\n%s$end\n\n$rem\n%s%s$end\n"
            % (title, charge, mult, coordinates(symbols, positions, "   "), rem,
               option_lines(keywords, "   ")))


def nwchem(name, title, charge, mult, symbols, positions, method, basis, keywords):
    """start, title, charge, the geometry (nocenter, noautosym, noautoz: as given), the basis
    for every element, the theory block and its task. Hartree-Fock is the scf module (uhf
    with nopen for an open shell), any other method the dft module's xc."""
    if method.lower() == "hf":
        theory = "scf\n  %s\n  nopen %d\n%send\ntask scf\n" % (
            "uhf" if mult > 1 else "rhf", mult - 1, option_lines(keywords, "  "))
    else:
        theory = "dft\n  xc %s\n  mult %d\n%send\ntask dft\n" % (
            method, mult, option_lines(keywords, "  "))
    return ("echo\nstart %s\ntitle \"%s\"\ncharge %d\n"
            "geometry units angstrom nocenter noautosym noautoz\n  symmetry c1\n%send\n"
            "basis\n  * library %s\nend\n%s") % (name, title, charge,
                                                 coordinates(symbols, positions, "  "), basis,
                                                 theory)


# Each engine: its input's suffix, its output's, the command that runs one input in the run's
# directory ({input} and {output} the file names there), and its writer.
ENGINES = {
    "gaussian": Engine(".gjf", ".log", "g16 < {input} > {output}", gaussian),
    "orca": Engine(".inp", ".out", "orca {input} > {output}", orca),
    "qchem": Engine(".in", ".out", "qchem {input} {output}", qchem),
    "nwchem": Engine(".nw", ".out", "nwchem {input} > {output}", nwchem),
}
