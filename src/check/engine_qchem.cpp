// Q-Chem's output: its banner, its endings, and its total energies: "Total energy in the final
// basis set" (the SCF) and "<level> total energy =" ("MP2         total energy =  -76.22 au",
// "CCSD(T) total energy  =  -76.24").
#include "engine_format.h"
#include "output_text.h"

namespace {

bool announces(std::string_view head) { return contains(head, "Welcome to Q-Chem"); }

bool read_energy_line(std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;
  if (contains(line, "Total energy in the final basis set")) {
    level = "SCF", value = 7;
  } else if (is_word(w[1], "total") && is_word(w[2], "energy") && is_level_name(w[0])) {
    level = upper(w[0]), value = 3;
  } else {
    return false;
  }
  return energy_after_label(w, value, hartree);
}

FinalEnergyLine final_energy(std::string_view text) {
  FinalEnergyLine result;
  std::string level;
  double hartree = 0.0;
  for (const std::string_view line : lines_of(text)) {
    if (!contains(line, "nergy") && !contains(line, "NERGY")) continue;
    if (!read_energy_line(line, level, hartree)) continue;
    result = {true, std::string(trim(line)), hartree, level};
  }
  return result;
}

void summarize(const OutputText& text, LogSummary& s) {
  s.termination =
      last_ending(text.tail, {"Thank you very much for using Q-Chem"}, {"Q-Chem fatal error"});
  s.final_energy = final_energy(text.tail);
  if (!s.final_energy.found) s.final_energy = final_energy(text.head);
}

}  // namespace

const EngineFormat kQchemFormat = {Engine::qchem, "Q-Chem",  announces,
                                   nullptr,       summarize, final_energy};
