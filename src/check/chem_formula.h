// Element symbols and molecular formulas, as the outputs of the quantum-chemistry engines write
// them: the formula in Hill order (carbon, hydrogen, then the other elements alphabetically;
// alphabetically throughout without carbon), a count of 1 left out: "C18H12", "CH2O", "H2O".
#ifndef GET_INTER_ENER_CHEM_FORMULA_H
#define GET_INTER_ENER_CHEM_FORMULA_H

#include <string>
#include <string_view>
#include <vector>

// The atomic number of an element symbol in any letter case, or 0 for a text that names no
// element (hydrogen to radon).
//
//   "C" -> 6;   "cl" -> 17;   "Xx" -> 0
int atomic_number(std::string_view symbol);

// The formula, in Hill order with counts of 1 left out as the engines write them, of the atoms
// `symbols` (one symbol per atom, in any letter case). No atoms give "".
//
//   {"O", "H", "H"} -> "H2O";   {"h", "C", "C"} -> "C2H"
std::string hill_formula(const std::vector<std::string>& symbols);

// Whether two formulas name the same atoms: the same count of every element, however each is
// written (a count of 1 written or not, elements in any order). A text that is no formula of
// known elements is the same as none.
//
//   "H2O1", "H2O" -> true;   "C1O1", "OC" -> true;   "C2H4", "C2H6" -> false;   "Xx", "Xx" -> false
bool same_formula(std::string_view a, std::string_view b);

// The number of electrons of the neutral molecule of `formula` ("C18H12" -> 156), or -1 for a
// text that is no formula of known elements. A symbol without a count counts once.
//
//   "H2O" -> 10;   "H2O1" -> 10;   "C2Q4" -> -1
int formula_electrons(std::string_view formula);

#endif  // GET_INTER_ENER_CHEM_FORMULA_H
