#include "chem_formula.h"

#include <cctype>
#include <map>

namespace {

// The symbols of hydrogen (1) to radon (86), in order of atomic number.
constexpr const char* kSymbols[] = {
    "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",
    "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn",
    "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh",
    "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd",
    "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",  "Re",
    "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn"};

// The symbol written with a capital and a small letter: "CL" -> "Cl".
std::string canonical_symbol(std::string_view symbol) {
  std::string s(symbol);
  for (std::size_t i = 0; i < s.size(); ++i) {
    const auto c = static_cast<unsigned char>(s[i]);
    s[i] = static_cast<char>(i == 0 ? std::toupper(c) : std::tolower(c));
  }
  return s;
}

}  // namespace

int atomic_number(std::string_view symbol) {
  const std::string s = canonical_symbol(symbol);
  for (int z = 1; z <= static_cast<int>(std::size(kSymbols)); ++z) {
    if (s == kSymbols[z - 1]) return z;
  }
  return 0;
}

std::string hill_formula(const std::vector<std::string>& symbols) {
  std::map<std::string, int> counts;  // alphabetical
  for (const std::string& symbol : symbols) ++counts[canonical_symbol(symbol)];
  std::string formula;
  const auto append = [&](const std::string& symbol) {
    formula += symbol;
    if (counts[symbol] > 1) formula += std::to_string(counts[symbol]);
    counts.erase(symbol);
  };
  if (counts.count("C") != 0) {
    append("C");
    if (counts.count("H") != 0) append("H");
  }
  while (!counts.empty()) append(counts.begin()->first);
  return formula;
}

namespace {

// The count of each element, by atomic number, of `formula` ("H2O1" -> {1: 2, 8: 1}); false for
// a text that is no formula of known elements, or one that writes more than a million atoms of
// one element at once or counts more than a hundred million in all (corrupt text).
bool element_counts(std::string_view formula, std::map<int, long long>& counts) {
  counts.clear();
  std::size_t i = 0;
  while (i < formula.size()) {
    std::size_t j = i + 1;
    if (!std::isupper(static_cast<unsigned char>(formula[i]))) return false;
    while (j < formula.size() && std::islower(static_cast<unsigned char>(formula[j]))) ++j;
    const int z = atomic_number(formula.substr(i, j - i));
    if (z == 0) return false;
    int count = 0;
    for (i = j; i < formula.size() && std::isdigit(static_cast<unsigned char>(formula[i])); ++i) {
      count = count * 10 + (formula[i] - '0');
      if (count > 1000000) return false;
    }
    counts[z] += j == i ? 1 : count;  // a symbol without a count counts once
    if (counts[z] > 100000000) return false;
  }
  return !formula.empty();
}

}  // namespace

bool same_formula(std::string_view a, std::string_view b) {
  std::map<int, long long> in_a, in_b;
  return element_counts(a, in_a) && element_counts(b, in_b) && in_a == in_b;
}

int formula_electrons(std::string_view formula) {
  std::map<int, long long> counts;
  if (!element_counts(formula, counts)) return -1;
  long long electrons = 0;
  for (const auto& [z, count] : counts) electrons += z * count;
  return electrons > 100000000 ? -1 : static_cast<int>(electrons);  // no molecule: corrupt
}
