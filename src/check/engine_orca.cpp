// ORCA's output (versions 4 to 6): its banner, its endings, the echo of its input ("|  1> !
// B3LYP def2-SVP Opt", "|  2> * xyz 0 1" and the atoms), the SCF settings ("Total Charge
// Charge .... 0", "Multiplicity Mult .... 1", the Hamiltonian), "Number of atoms", the last
// "CARTESIAN COORDINATES (ANGSTROEM)" table, "Your calculation utilizes the basis:", its SCF
// failures, "Expectation value of <S**2>", "THE OPTIMIZATION HAS CONVERGED", and its total
// energies: "Total Energy :" of each SCF, the correlated levels ("E(CCSD(T))  ...  -76.24",
// "MP2 TOTAL ENERGY:  -76.23 Eh") and "FINAL SINGLE POINT ENERGY", the job's final energy, of
// the last level named before it (none: the SCF).
#include <cctype>
#include <cmath>
#include <set>

#include "chem_formula.h"
#include "engine_format.h"
#include "output_text.h"

namespace {

bool announces(std::string_view head) { return contains(head, "* O   R   C   A *"); }

// The level whose total energy a line prints, and that energy; false for any other line.
// "FINAL SINGLE POINT ENERGY" gives the level "": the job's final energy, of the last level
// named before it.
//   "FINAL SINGLE POINT ENERGY  -76.24", "E(CCSD(T))  ...  -76.24", "MP2 TOTAL ENERGY:  -76.23 Eh"
bool read_energy_line(std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;
  if (w.size() > 4 && w[0] == "FINAL" && w[1] == "SINGLE" && w[2] == "POINT" && w[3] == "ENERGY") {
    level.clear(), value = 4;
  } else if (starts_with(w[0], "E(") && w[0].back() == ')' &&
             is_level_name(w[0].substr(2, w[0].size() - 3))) {
    level = upper(w[0].substr(2, w[0].size() - 3)), value = 1;
  } else if (is_word(w[1], "total") && is_word(w[2], "energy") && is_level_name(w[0])) {
    level = upper(w[0]), value = 3;
  } else {
    return false;
  }
  return energy_after_label(w, value, hartree);
}

// The SCF total of one SCF, at the start of its line: "Total Energy       :  -382.05 Eh"
// (the iterations print theirs indented).
bool is_scf_total(std::string_view line) {
  return starts_with(line, "Total Energy") && contains(line, ":");
}

// The total energies of `text` into `levels` (each level's last), the final energy of the job
// (the last "FINAL SINGLE POINT ENERGY", of the level named before it) into `final`, and the
// number of SCF totals.
int read_levels(std::string_view text, std::vector<LevelEnergy>& levels, FinalEnergyLine& final) {
  std::string named;  // the last level named so far
  std::string level;
  double hartree = 0.0;
  int scf_totals = 0;
  for (const std::string_view line : lines_of(text)) {
    if (!contains(line, "NERGY") && !contains(line, "E(") && !contains(line, "Energy")) continue;
    if (is_scf_total(line) && number_after(line, line.find(':') + 1, hartree)) {
      note_level(levels, "SCF", hartree, line);
      named = "SCF";
      ++scf_totals;
      continue;
    }
    if (!read_energy_line(line, level, hartree)) continue;
    if (level.empty()) {
      level = named.empty() ? "SCF" : named;
      final = {true, std::string(trim(line)), hartree, level};
    }
    named = level;
    note_level(levels, level, hartree, line);
  }
  return scf_totals;
}

// The final energy of a block: its last "FINAL SINGLE POINT ENERGY" (without one, none is
// guessed from the other totals).
FinalEnergyLine final_energy(std::string_view text) {
  std::vector<LevelEnergy> levels;
  FinalEnergyLine final;
  read_levels(text, levels, final);
  return final;
}

// The lines of the input's echo ("|  1> ! B3LYP def2-SVP"), each without its "|  N> ".
std::vector<std::string_view> input_lines(std::string_view head) {
  std::vector<std::string_view> lines;
  for (const std::string_view line : lines_of(head)) {
    const std::size_t mark = line.find("> ");
    if (line.empty() || line[0] != '|' || mark == npos || mark > 8) continue;
    if (contains(line, "****END OF INPUT****")) break;
    lines.push_back(line.substr(mark + 2));
  }
  return lines;
}

// The simple input's keywords, lower case: every "!" line's words.
std::vector<std::string> keywords(const std::vector<std::string_view>& input) {
  std::vector<std::string> words;
  for (const std::string_view line : input) {
    const std::string_view text = trim(line);
    if (text.empty() || text[0] != '!') continue;
    for (const std::string_view word : words_of(text.substr(1))) {
      std::string w(word);
      for (char& c : w) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      words.push_back(w);
    }
  }
  return words;
}

// Keywords of the simple input that name no method: references, job kinds, convergence,
// grids, approximations, dispersion, solvation, output.
bool is_option(const std::string& w) {
  static const std::set<std::string> kOptions = {
      "rks",        "uks",          "roks",      "rhf",         "uhf",          "rohf",
      "sp",         "energy",       "opt",       "copt",        "zopt",         "optts",
      "tightopt",   "verytightopt", "looseopt",  "freq",        "numfreq",      "anfreq",
      "engrad",     "numgrad",      "md",        "irc",         "nmr",          "scants",
      "tightscf",   "verytightscf", "loosescf",  "normalscf",   "extremescf",   "strongscf",
      "sloppyscf",  "usesym",       "nousesym",  "ri",          "nori",         "rijcosx",
      "rijk",       "rijonx",       "cosx",      "soscf",       "nososcf",      "kdiis",
      "slowconv",   "veryslowconv", "d2",        "d3",          "d3bj",         "d3zero",
      "d4",         "nopop",        "miniprint", "smallprint",  "normalprint",  "largeprint",
      "printbasis", "keepdens",     "moread",    "noautostart", "autoaux",      "allpop",
      "xyzfile",    "pmodel",       "hueckel",   "frozencore",  "nofrozencore", "defgrid1",
      "defgrid2",   "defgrid3",     "noiter",    "uno",         "uco",          "tddft"};
  if (kOptions.count(w) != 0 || w.find('/') != npos || starts_with(w, "pal") ||
      starts_with(w, "grid") || starts_with(w, "finalgrid") || starts_with(w, "cpcm") ||
      starts_with(w, "smd") || starts_with(w, "maxcore")) {
    return true;
  }
  return false;
}

// The method among the keywords: a correlated level ("MP2", "DLPNO-CCSD(T)"), else the first
// keyword that is neither the basis nor an option (a functional, or "HF"), else ORCA's default,
// Hartree-Fock; "" without keywords (no input echoed).
//
//   {"uks", "b3lyp", "sto-3g", "usesym"}, "STO-3G" -> "B3LYP"
std::string read_method(const std::vector<std::string>& words, const std::string& basis) {
  if (words.empty()) return "";
  for (const std::string& w : words) {
    const std::string name = upper(w);
    if (name != "HF" && name != "SCF" && name != "DFT" && is_level_name(name)) return name;
  }
  for (const std::string& w : words) {
    if (!is_option(w) && upper(w) != basis) return upper(w);
  }
  return "HF";
}

// The element symbols of the coordinate table whose heading is at `at` in `text`: rows "  C
// -1.41 0.23 0.00" after a line of dashes, up to a blank line. False when the text ends first.
bool read_coordinates(std::string_view text, std::size_t at, std::vector<std::string>& symbols) {
  symbols.clear();
  const std::vector<std::string_view> lines = lines_of(text.substr(at));
  for (std::size_t i = 2; i + 1 < lines.size(); ++i) {  // the heading, its dashes, then rows
    const std::vector<std::string_view> w = words_of(lines[i]);
    if (w.empty()) return !symbols.empty();
    std::string symbol(w[0]);
    if (w.size() != 4 || atomic_number(symbol) == 0) return false;
    symbols.push_back(symbol);
  }
  return false;
}

// The atoms given in the input: the lines after "* xyz C M" up to "*".
std::vector<std::string> input_atoms(const std::vector<std::string_view>& input) {
  std::vector<std::string> symbols;
  bool in_block = false;
  for (const std::string_view line : input) {
    const std::string_view text = trim(line);
    if (!in_block) {
      in_block = starts_with(upper(text), "* XYZ ") || starts_with(upper(text), "*XYZ ");
      in_block &= !contains(upper(text), "XYZFILE");
      continue;
    }
    if (starts_with(text, "*")) return symbols;
    const std::string symbol = atom_symbol(text);
    if (symbol.empty()) return {};
    symbols.push_back(symbol);
  }
  return {};
}

// The last place of `marker`: in the tail, else in the head.
std::string_view last_line(const OutputText& t, std::string_view marker) {
  const std::string_view line = last_line_with(t.tail, marker);
  return line.empty() ? last_line_with(t.head, marker) : line;
}

void read_state(const OutputText& t, const std::vector<std::string_view>& input, LogSummary& s) {
  double charge = 0, multiplicity = 0;
  const std::string_view c = last_line(t, "Total Charge           Charge"),
                         m = last_line(t, "Multiplicity           Mult");
  if (!c.empty() && !m.empty() && number_after(c, c.find("....") + 4, charge) &&
      number_after(m, m.find("....") + 4, multiplicity)) {
    s.has_charge = charge == std::floor(charge) && multiplicity == std::floor(multiplicity);
    s.charge = static_cast<int>(std::fmax(-1e6, std::fmin(1e6, charge)));
    s.multiplicity = static_cast<int>(std::fmax(-1e6, std::fmin(1e6, multiplicity)));
    return;
  }
  for (const std::string_view line : input) {  // "* xyz 0 1", "*xyzfile 1 2 mol.xyz"
    const std::string_view text = trim(line);
    if (text.empty() || text[0] != '*') continue;
    const std::vector<std::string_view> w = words_of(text.substr(1));
    if (w.size() >= 3 && read_charge_pair((std::string(w[1]) + " " + std::string(w[2])).c_str(),
                                          "%lld %lld", s.charge, s.multiplicity)) {
      s.has_charge = true;
      return;
    }
  }
}

void read_atoms(const OutputText& t, const std::vector<std::string_view>& input, LogSummary& s) {
  constexpr std::string_view kTable = "CARTESIAN COORDINATES (ANGSTROEM)";
  std::vector<std::string> symbols;
  const std::size_t in_tail = find_last(t.tail, kTable), in_head = t.head.find(kTable);
  if (!((in_tail != npos && read_coordinates(t.tail, in_tail, symbols)) ||
        (in_head != npos && read_coordinates(t.head, in_head, symbols)))) {
    symbols = input_atoms(input);
  }
  if (!symbols.empty()) {
    s.atom_count = static_cast<int>(symbols.size());
    s.formula = hill_formula(symbols);
  }
}

void read_job(const OutputText& t, const std::vector<std::string_view>& input,
              const std::vector<std::string>& words, LogSummary& s) {
  for (const std::string& w : words) {
    s.optimisation |= w == "opt" || w == "copt" || w == "zopt" || w == "optts" || w == "tightopt" ||
                      w == "verytightopt" || w == "looseopt";
    s.frequency |= w == "freq" || w == "numfreq" || w == "anfreq";
    s.dynamics |= w == "md";
    s.excited_states |= w == "tddft" || starts_with(w, "eom-") || starts_with(w, "bt-pno-steom");
  }
  bool in_geom = false;
  for (const std::string_view line : input) {
    const std::string text = upper(trim(line));
    if (starts_with(text, "%")) in_geom = starts_with(text, "%GEOM");
    s.scan |= in_geom && (starts_with(text, "SCAN") || contains(text, " SCAN"));
    s.excited_states |= starts_with(text, "%TDDFT") || starts_with(text, "%CIS");
    s.dynamics |= starts_with(text, "%MD");
  }
  s.optimisation |= s.scan;
  s.converged = s.optimisation && contains(t.tail, "THE OPTIMIZATION HAS CONVERGED");
}

void summarize(const OutputText& text, LogSummary& s) {
  s.termination = last_ending(text.tail, {"ORCA TERMINATED NORMALLY"},
                              {"ORCA finished by error termination", "aborting the run"});
  const std::vector<std::string_view> input = input_lines(text.head);
  const std::vector<std::string> words = keywords(input);
  read_state(text, input, s);
  read_atoms(text, input, s);
  const std::string_view basis = last_line(text, "Your calculation utilizes the basis:");
  if (!basis.empty()) s.basis = upper(trim(basis.substr(basis.find(':') + 1)));
  s.method = read_method(words, s.basis);
  read_job(text, input, words, s);
  // An SCF that did not converge says so after its iterations; a converged one says "SCF
  // CONVERGED AFTER n CYCLES".
  std::size_t failed = npos;
  for (const char* t : {"SCF NOT CONVERGED", "NOT FULLY CONVERGED"}) {
    const std::size_t at = find_last(text.tail, t);
    if (at != npos && (failed == npos || at > failed)) failed = at;
  }
  const std::size_t converged = find_last(text.tail, "SCF CONVERGED AFTER");
  s.scf_failed = failed != npos && (converged == npos || failed > converged);
  const std::string_view s2 = last_line(text, "Expectation value of <S**2>");
  s.has_s2 = !s2.empty() && number_after(s2, s2.find(':') + 1, s.s2);
  const int totals = read_levels(text.tail, s.levels, s.final_energy);
  if (text.whole) s.scf_count = totals;
  if (!s.final_energy.found) s.final_energy = final_energy(text.head);
}

}  // namespace

const EngineFormat kOrcaFormat = {Engine::orca, "ORCA",    announces,
                                  nullptr,      summarize, final_energy};
