"""The molecules of a periodic structure and their neighbours, for make_crystal.py.

A structure is one set of atoms in a cell (a crystal's unit cell, an MD snapshot's box), read
with ASE from any format it knows (CIF, PDB with CRYST1, GROMACS .gro, extended XYZ, ...). The
cell is taken as periodic in its three directions. Two atoms are bonded when they lie closer
than BOND_SCALE times the sum of their covalent radii, across the cell's faces too; a molecule
is a set of bonded atoms, made whole: each atom moved by whole cell vectors next to the atoms
it is bonded to. Sites are the molecules in the order of their first atom in the file.
"""
import os

import numpy

# Bonded: closer than this times the sum of the two covalent radii. Covalent bonds lie within
# a few per cent of the sum (H-H 1.19 times it); hydrogen bonds and contacts between molecules
# lie at 1.6 times it and beyond.
BOND_SCALE = 1.25


class StructureError(Exception):
    """The structure cannot give sites: its message says why."""


def read_structure(path):
    """The atoms of the one structure in the file at `path` (format from its name or content,
    as ASE finds it), with its cell periodic in three directions.
    Raises StructureError for an empty file, a file ASE cannot read, one holding no atom or several
    structures, an unknown element, or a cell that does not span three dimensions.
    Example: read_structure("cell.cif") -> Atoms(symbols="C36H24", pbc=True, cell=[...])"""
    import ase.io  # ASE takes a second to load; only a structure needs it
    if os.path.isfile(path) and os.path.getsize(path) == 0:
        raise StructureError("is empty")
    try:
        frames = ase.io.read(path, index=":")
    except (FileNotFoundError, PermissionError, IsADirectoryError) as error:
        raise StructureError("cannot be read: %s" % error.strerror)
    except KeyError as error:
        raise StructureError("unknown element %s" % error)
    except Exception as error:  # ASE's readers raise anything a bad file makes them meet
        raise StructureError("not a structure ASE can read: %s" % (error or type(error).__name__))
    if len(frames) != 1:
        raise StructureError("holds %d structures; give one" % len(frames))
    atoms = frames[0]
    if len(atoms) == 0:
        raise StructureError("holds no atom")
    unknown = numpy.flatnonzero(atoms.numbers <= 0)
    if len(unknown):
        raise StructureError("atom %d has no known element" % (unknown[0] + 1))
    if atoms.cell.rank != 3:
        raise StructureError("has no cell (three cell vectors spanning a volume are needed to "
                             "find molecules across its faces and their periodic images)")
    atoms.pbc = True
    return atoms


def find_molecules(atoms):
    """The molecules of `atoms`: a list of (atom indices in file order, whole positions), the
    molecules in the order of their first atom. The first atom of each keeps its position as
    read; every other atom is moved by whole cell vectors next to an atom it is bonded to.
    Raises StructureError for an atom bonded to no other, or a molecule bonded to its own
    periodic image (a chain or network that spans the cell: no molecule).
    Example: two water molecules -> [([0, 1, 2], array 3x3), ([3, 4, 5], array 3x3)]"""
    from ase.data import covalent_radii
    from ase.neighborlist import neighbor_list
    radii = covalent_radii[atoms.numbers] * BOND_SCALE
    first, second, shifts = neighbor_list("ijS", atoms, radii)
    bonds = [[] for _ in range(len(atoms))]
    for i, j, shift in zip(first, second, shifts):
        if i == j:
            raise StructureError("atom %d (%s) is bonded to its own periodic image: a chain or "
                                 "network, not a molecule" % (i + 1, atoms[i].symbol))
        bonds[i].append((j, shift))
    image = [None] * len(atoms)  # each atom's cell shift once it is placed
    molecules = []
    for start in range(len(atoms)):
        if image[start] is not None:
            continue
        if not bonds[start]:
            raise StructureError("atom %d (%s) is bonded to no other atom: no molecule" % (
                start + 1, atoms[start].symbol))
        image[start] = numpy.zeros(3, dtype=int)
        members, pending = [start], [start]
        while pending:
            i = pending.pop()
            for j, shift in bonds[i]:
                placed = image[i] + shift
                if image[j] is None:
                    image[j] = placed
                    members.append(j)
                    pending.append(j)
                elif (image[j] != placed).any():
                    raise StructureError(
                        "the molecule of atom %d (%s) is bonded to its own periodic image: a "
                        "chain or network that spans the cell, not a molecule" % (
                            start + 1, atoms[start].symbol))
        members.sort()
        positions = atoms.positions[members] + numpy.array([image[m] for m in members]) @ atoms.cell
        molecules.append((members, positions))
    return molecules


def find_neighbors(atoms, molecules, distance):
    """Each site's neighbours: for site s (0-based), the sorted list of (site, cell shift) of
    every molecule, periodic images included, with an atom closer than `distance` (Å) to an
    atom of s. A site beside its own image, or beside several images of one site, lists each
    image. Mutual by construction: (t, shift) in s's list exactly when (s, -shift) is in t's.
    Example: one molecule in a 4 Å cubic cell, distance 5 -> [[(0, (-1,0,0)), (0, (0,-1,0)),
    ...]] (its six face images)"""
    from ase import Atoms
    from ase.neighborlist import neighbor_list
    site_of = numpy.concatenate([[s] * len(m[0]) for s, m in enumerate(molecules)])
    whole = Atoms(numbers=numpy.concatenate([atoms.numbers[m[0]] for m in molecules]),
                  positions=numpy.concatenate([m[1] for m in molecules]), cell=atoms.cell,
                  pbc=True)
    first, second, shifts = neighbor_list("ijS", whole, float(distance))
    pairs = set()
    for i, j, shift in zip(first, second, shifts):
        s, t, shift = int(site_of[i]), int(site_of[j]), tuple(int(k) for k in shift)
        if s != t or shift != (0, 0, 0):
            pairs.add((s, t, shift))
    lists = [[] for _ in molecules]
    for s, t, shift in sorted(pairs):
        lists[s].append((t, shift))
    return lists
