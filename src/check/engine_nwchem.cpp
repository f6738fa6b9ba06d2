// NWChem's output: its banner, its endings, and its total energies: "Total <level> energy"
// ("Total DFT energy =  -76.42", "Total SCF energy =", "Total MP2 energy  -76.22",
// "Total CCSD(T) energy:  -76.24") and, from its tensor contraction engine, "<level> total
// energy / hartree =".
#include "engine_format.h"
#include "output_text.h"

namespace {

bool announces(std::string_view head) {
  return contains(head, "Northwest Computational Chemistry Package");
}

bool read_energy_line(std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;
  if (w[0] == "Total" && is_word(w[2], "energy") && is_level_name(w[1])) {
    level = upper(w[1]), value = 3;
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
      last_ending(text.tail, {"Total times  cpu:"},
                  {"This error has not yet been assigned to a category", "error is most commonly"});
  s.final_energy = final_energy(text.tail);
  if (!s.final_energy.found) s.final_energy = final_energy(text.head);
}

}  // namespace

const EngineFormat kNwchemFormat = {Engine::nwchem, "NWChem",  announces,
                                    nullptr,        summarize, final_energy};
