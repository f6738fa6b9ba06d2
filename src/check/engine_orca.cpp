// ORCA's output: its banner, its endings, and its total energies: "FINAL SINGLE POINT ENERGY",
// the job's final energy, of the last level named before it ("E(CCSD(T))  ...  -76.24",
// "MP2 TOTAL ENERGY:  -76.23 Eh"; none: the SCF).
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

FinalEnergyLine final_energy(std::string_view text) {
  FinalEnergyLine result;
  std::string named;  // the last level named so far
  std::string level;
  double hartree = 0.0;
  for (const std::string_view line : lines_of(text)) {
    if (!contains(line, "NERGY") && !contains(line, "E(")) continue;
    if (!read_energy_line(line, level, hartree)) continue;
    if (level.empty()) level = named.empty() ? "SCF" : named;
    named = level;
    result = {true, std::string(trim(line)), hartree, level};
  }
  return result;
}

void summarize(const OutputText& text, LogSummary& s) {
  s.termination = last_ending(text.tail, {"ORCA TERMINATED NORMALLY"},
                              {"ORCA finished by error termination", "aborting the run"});
  s.final_energy = final_energy(text.tail);
  if (!s.final_energy.found) s.final_energy = final_energy(text.head);
}

}  // namespace

const EngineFormat kOrcaFormat = {Engine::orca, "ORCA",    announces,
                                  nullptr,      summarize, final_energy};
