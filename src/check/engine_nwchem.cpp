// NWChem's output (versions 6 and 7): its banner, its endings, the echo of the input deck (when
// the input asks for it with "echo": its "task" lines and the DFT block's "xc" line), the
// geometry's atom table, the "ao basis" summary, the DFT module's "General Information" and "XC
// Information", the SCF module's header, the modules a task runs (geometry optimisation,
// frequencies, TDDFT, QMD), SCF failures, <S2>, and its total energies: "Total <level> energy"
// ("Total DFT energy =  -76.42", "Total SCF energy =", "Total MP2 energy  -76.22",
// "Total CCSD(T) energy:  -76.24") and, from its tensor contraction engine, "<level> total
// energy / hartree =".
#include <algorithm>
#include <cctype>
#include <cmath>

#include "chem_formula.h"
#include "engine_format.h"
#include "output_text.h"

namespace {

bool announces(std::string_view head) {
  return contains(head, "Northwest Computational Chemistry Package");
}

// A statement found in the text: the part of the text it is in and its position there. The
// tail is searched first (the statement nearest the end), the head when the tail has none.
struct Place {
  std::string_view text;
  std::size_t at = npos;
  bool in_tail = false;
  bool found() const { return at != npos; }
};

Place last_place(const OutputText& t, std::string_view marker) {
  std::size_t at = find_last(t.tail, marker);
  if (at != npos) return {t.tail, at, true};
  at = find_last(t.head, marker);
  return at != npos ? Place{t.head, at, false} : Place{};
}

// Whether `a` stands after `b` in the output (what the tail holds is after what the head holds).
bool after(const Place& a, const Place& b) {
  if (!a.found() || !b.found()) return a.found();
  if (a.in_tail != b.in_tail) return a.in_tail;
  return a.at > b.at;
}

// The lines of `text` after the one that holds `at`, one at a time, each without its line end.
// Only lines ended by a line feed are given: a last one without it is the end of a text cut
// there (or of an output whose last line is none of the tables read here).
//
//   Lines("a\nb\nc\nd", 0): "b", "c", then none
struct Lines {
  Lines(std::string_view text, std::size_t at) : text(text), pos(text.find('\n', at)) {
    if (pos != npos) ++pos;
  }
  bool next(std::string_view& line) {
    const std::size_t end = text.find('\n', pos);  // none from npos or the end either
    if (end == npos) return false;
    line = text.substr(pos, end - pos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    pos = end + 1;
    return true;
  }
  std::string_view text;
  std::size_t pos;
};

// What the echo of the input deck states ("echo" in the input prints it before the banner):
// each "task THEORY [OPERATION]" line, and the "xc" line of the "dft" block.
struct InputDeck {
  std::vector<std::pair<std::string, std::string>> tasks;  // theory, operation, lower case
  std::string xc;                                          // "becke88 lyp", lower case
};

std::string lower(std::string_view text) {
  std::string s(text);
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// The deck between "echo of input deck" and the line of "=" after it; directives are
// separated by line ends and ";", a "#" begins a comment.
InputDeck read_input_deck(std::string_view head) {
  InputDeck deck;
  const std::size_t begin = head.find("echo of input deck");
  if (begin == npos) return deck;
  bool in_dft = false;
  std::string_view line;
  for (Lines lines(head, begin); lines.next(line);) {
    if (starts_with(line, "=====")) break;
    for (const std::string_view directive : split(line.substr(0, line.find('#')), ";")) {
      const std::vector<std::string_view> w = words_of(directive);
      if (w.empty()) continue;
      const std::string first = lower(w[0]);
      if (first == "task" && w.size() > 1) {
        deck.tasks.emplace_back(lower(w[1]), w.size() > 2 ? lower(w[2]) : "energy");
      } else if (first == "dft" && w.size() == 1) {
        in_dft = true;
      } else if (first == "end") {
        in_dft = false;
      } else if (in_dft && first == "xc") {
        deck.xc.clear();
        for (std::size_t i = 1; i < w.size(); ++i) deck.xc += (i > 1 ? " " : "") + lower(w[i]);
      }
    }
  }
  return deck;
}

// The element of a row of the geometry's atom table from its tag and nuclear charge, or "" for
// a ghost ("bq...", charge 0) or dummy atom. The tag begins with the element's symbol, written
// in any case and followed by anything ("C", "H1", "Cl2", "o"); a one-letter symbol followed
// by a letter ("CA") is told from a two-letter one by the charge.
//
//   "H1", 1.0 -> "H";   "Cl", 17.0 -> "Cl";   "CA", 6.0 -> "C";   "bqH", 0.0 -> ""
std::string tag_element(std::string_view tag, double charge) {
  if (charge == 0.0 || lower(tag.substr(0, 2)) == "bq") return "";
  const int z = charge > 0 && charge < 200 ? static_cast<int>(std::lround(charge)) : 0;
  std::string one(tag.substr(0, 1)), two(tag.substr(0, 2));
  if (two.size() < 2 || !std::isalpha(static_cast<unsigned char>(two[1]))) two.clear();
  const int z_one = atomic_number(one), z_two = two.empty() ? 0 : atomic_number(two);
  if (z_two > 0 && (z_two == z || z_one != z)) return two;
  return z_one > 0 ? one : "";
}

// The elements of the atom table that follows the heading at `at` ("Geometry "geometry" ->
// ..."): its rows "1 C 6.0000 0.0 0.0 0.0" up to the first other line. False when the table is
// cut by the end of `text` (a head taken from a longer text, or an output cut off there).
bool read_atom_table(std::string_view text, std::size_t at, std::vector<std::string>& symbols) {
  symbols.clear();
  // The rows follow the line "---- ---------------- ----------" a few lines below the heading.
  int before_rows = 0;
  std::string_view line;
  for (Lines lines(text, at); lines.next(line);) {
    const std::vector<std::string_view> w = words_of(line);
    if (before_rows >= 0) {
      if (!w.empty() && w[0] == "----")
        before_rows = -1;
      else if (++before_rows > 10)
        return false;
      continue;
    }
    double index = 0, charge = 0, x = 0;
    if (w.size() < 6 || !read_number(w[0], index) || !read_number(w[2], charge) ||
        !read_number(w[3], x)) {
      return true;
    }
    const std::string symbol = tag_element(w[1], charge);
    if (!symbol.empty()) symbols.push_back(symbol);
  }
  return false;
}

// The atoms of the geometry: the first table of the geometry "geometry" in the head (the input
// module prints it before any task), else the last one of the tail.
bool read_atoms(const OutputText& t, std::vector<std::string>& symbols) {
  constexpr std::string_view kHeading = "Geometry \"geometry\" ->";
  const std::size_t first = t.head.find(kHeading);
  if (first != npos && read_atom_table(t.head, first, symbols)) return true;
  const std::size_t last = find_last(t.tail, kHeading);
  return last != npos && read_atom_table(t.tail, last, symbols);
}

// The basis of the last summary of the "ao basis" ("Summary of "ao basis" -> "ao basis"
// (cartesian)"): its rows "TAG  DESCRIPTION  SHELLS  FUNCTIONS  TYPES", or "*  DESCRIPTION  on
// all atoms". One description for every tag is the basis's name; different ones are named tag
// by tag, "TAG:DESCRIPTION" joined by ",", in the table's order. Upper case.
//
//   "C  6-31g*  ...", "H  6-31g*  ..." -> "6-31G*";   "O  6-31g* ...", "H  sto-3g ..." ->
//   "O:6-31G*,H:STO-3G"
std::string read_basis(const OutputText& t) {
  const Place p = last_place(t, "Summary of \"ao basis\"");
  if (!p.found()) return "";
  // The rows follow the second line of dashes; a blank line ends them.
  std::vector<std::pair<std::string, std::string>> rows;
  int dashes = 0, before_rows = 0;
  bool ended = false;
  std::string_view line;
  for (Lines lines(p.text, p.at); !ended && lines.next(line);) {
    const std::vector<std::string_view> w = words_of(line);
    if (dashes < 2) {
      if (!w.empty() && starts_with(w[0], "-----")) ++dashes;
      if (++before_rows > 5) return "";
      continue;
    }
    std::size_t end = w.size() >= 3 && w[w.size() - 3] == "on" ? w.size() - 3 : w.size();
    if (end == w.size()) end = w.size() >= 5 ? w.size() - 3 : 0;
    ended = end < 2;
    if (ended) break;
    std::string description;
    for (std::size_t i = 1; i < end; ++i) description += (i > 1 ? " " : "") + upper(w[i]);
    rows.emplace_back(std::string(w[0]), description);
  }
  if (!ended) return "";  // cut before its end
  std::string named;
  for (const auto& row : rows) named += (named.empty() ? "" : ",") + row.first + ":" + row.second;
  const bool one = std::all_of(rows.begin(), rows.end(),
                               [&rows](const auto& row) { return row.second == rows[0].second; });
  return one && !rows.empty() ? rows[0].second : named;
}

// The number that follows `label` on the line at `p`.
bool number_at(const Place& p, std::string_view label, double& value) {
  const std::string_view line = line_at(p.text, p.at);
  const std::size_t at = line.find(label);
  return at != npos && number_after(line, at + label.size(), value);
}

// The SCF module's header: "charge          =   1.00", "wavefunction    = UHF" (RHF, ROHF or
// UHF), "open shells     =     1" or "alpha electrons =     5" and "beta  electrons =     4"
// (the DFT gradient module prints "wavefunction    = closed shell": not this header).
struct ScfHeader {
  Place place;  // the wavefunction line
  std::string wavefunction;
  bool has_charge = false;
  int charge = 0;
  int multiplicity = 0;
};

ScfHeader read_scf_header(const OutputText& t) {
  ScfHeader h;
  for (const bool tail : {true, false}) {
    const std::string_view text = tail ? t.tail : t.head;
    for (std::size_t at = text.size(); at > 0 && !h.place.found();) {
      at = find_last(text, "wavefunction    = ", at - 1);
      if (at == npos) break;
      const std::vector<std::string_view> w = words_of(line_at(text, at));
      if (w.size() == 3 && (w[2] == "RHF" || w[2] == "ROHF" || w[2] == "UHF")) {
        h.place = {text, at, tail};
        h.wavefunction = std::string(w[2]);
      }
    }
    if (h.place.found()) break;
  }
  if (!h.place.found()) return h;
  // The header's lines before the wavefunction line, from its "ao basis" line on.
  const std::string_view text = h.place.text;
  const std::size_t begin = find_last(text, "ao basis        =", h.place.at);
  if (begin == npos || h.place.at - begin > 1000) return h;
  const std::string_view header = text.substr(begin, h.place.at - begin);
  double charge = 0, open = 0, alpha = 0, beta = 0;
  if (!stated_number(header, "charge          =", charge) || charge != std::floor(charge)) {
    return h;
  }
  if (h.wavefunction == "UHF") {
    if (!stated_number(header, "alpha electrons =", alpha) ||
        !stated_number(header, "beta  electrons =", beta)) {
      return h;
    }
    open = std::fabs(alpha - beta);
  } else if (!stated_number(header, "open shells     =", open)) {
    return h;
  }
  if (!(open >= 0 && open < 1e6)) return h;  // not a number of electrons
  h.has_charge = true;
  h.charge = static_cast<int>(std::clamp(charge, -1e9, 1e9));
  h.multiplicity = static_cast<int>(open) + 1;
  return h;
}

// The DFT module's "General Information": "Charge           :    -1" and
// "Spin multiplicity:     2", the last of each, on lines close together.
bool read_dft_header(const OutputText& t, Place& place, int& charge, int& multiplicity) {
  place = last_place(t, "Spin multiplicity:");
  const Place c = last_place(t, "Charge           :");
  double q = 0, m = 0;
  if (!place.found() || !c.found() || c.in_tail != place.in_tail || c.at > place.at ||
      place.at - c.at > 200 || !number_at(c, "Charge           :", q) ||
      !number_at(place, "Spin multiplicity:", m) || q != std::floor(q) || m != std::floor(m)) {
    return false;
  }
  charge = static_cast<int>(std::clamp(q, -1e9, 1e9));
  multiplicity = static_cast<int>(std::clamp(m, -1e9, 1e9));
  return true;
}

// The functional of the last "XC Information" block: its "B3LYP Method XC Potential" line (or
// "PBE0 Method XC Functional"); a block of exact exchange alone is "HF"; for a combination of
// its own ("xc becke88 lyp"), the words of the input's "xc" line joined by "+"
// ("BECKE88+LYP"); "" unknown.
std::string read_functional(const OutputText& t, const InputDeck& deck) {
  const Place p = last_place(t, "XC Information");
  if (!p.found()) return "";
  std::vector<std::string_view> parts;
  std::string_view line;
  for (Lines lines(p.text, p.at); lines.next(line);) {
    const std::string_view part = trim(line);
    if (part.empty()) break;
    if (!starts_with(part, "---")) parts.push_back(part);
    if (parts.size() > 20) break;
  }
  for (const std::string_view part : parts) {
    const std::size_t method = part.find(" Method XC ");
    if (method != npos) return upper(trim(part.substr(0, method)));
  }
  if (parts.size() == 1 && starts_with(parts[0], "Hartree-Fock (Exact) Exchange")) return "HF";
  std::string name;
  for (const std::string_view word : words_of(deck.xc))
    name += (name.empty() ? "" : "+") + upper(word);
  return name;
}

// The level whose total energy a line prints, and that energy: "Total DFT energy =",
// "Total MP2 energy", "Total CCSD(T) energy:", "CCSD(T) total energy / hartree =", a TDDFT
// job's "Excited state energy =" (level "TDDFT"). False for any other line.
bool read_energy_line(std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;
  if (w[0] == "Total" && is_word(w[2], "energy") && is_level_name(w[1])) {
    level = upper(w[1]), value = 3;
  } else if (is_word(w[1], "total") && is_word(w[2], "energy") && is_level_name(w[0])) {
    level = upper(w[0]), value = 3;
  } else if (w[0] == "Excited" && w[1] == "state" && w[2] == "energy") {
    level = "TDDFT", value = 3;
  } else {
    return false;
  }
  return energy_after_label(w, value, hartree);
}

bool is_scf_level(const std::string& level) { return level == "SCF" || level == "DFT"; }

// The total energies of `text`, each level's last, and where each SCF total stands.
void read_levels(std::string_view text, std::vector<LevelEnergy>& levels,
                 std::vector<std::size_t>* scf_totals) {
  std::string level;
  double hartree = 0.0;
  for (std::size_t here = 0; here < text.size();) {
    const std::size_t end = std::min(text.find('\n', here), text.size());
    const std::string_view line = text.substr(here, end - here);
    here = end + 1;
    if (!contains(line, "nergy") && !contains(line, "NERGY")) continue;
    if (!read_energy_line(line, level, hartree)) continue;
    note_level(levels, level, hartree, line);
    if (scf_totals != nullptr && is_scf_level(level)) scf_totals->push_back(end - line.size());
  }
}

// The level the job asks for: the theory of the input's last "task" line ("task mp2" ->
// "MP2", "task dft optimize" -> "DFT", a TDDFT job's ground state "DFT"), else the coupled
// cluster module's "level of theory    ccsd(t)"; "" when neither tells it (a "task tce" job's
// level is its block's).
std::string job_level(std::string_view text, const InputDeck& deck) {
  for (auto task = deck.tasks.rbegin(); task != deck.tasks.rend(); ++task) {
    const std::string& theory = task->first;
    if (theory == "scf") return "SCF";
    if (theory == "dft" || theory == "tddft" || theory == "sodft") return "DFT";
    if (theory == "mp2" || theory == "direct_mp2" || theory == "semi_direct_mp2") return "MP2";
    if (theory == "rimp2") return "RI-MP2";
    if (theory == "ccsd" || theory == "ccsd(t)" || theory == "ccsd+t(ccsd)") return upper(theory);
    if (theory == "tce") break;
  }
  const std::size_t at = find_last(text, " level of theory ");
  if (at != npos) {
    const std::vector<std::string_view> w = words_of(line_at(text, at));
    if (w.size() == 4) return upper(w[3]);
  }
  return "";
}

FinalEnergyLine final_energy(std::string_view block) {
  LogSummary s;
  read_levels(block, s.levels, nullptr);
  choose_final_energy(job_level(block, read_input_deck(block)), s);
  return s.final_energy;
}

// The job's kinds from its task lines' operations and the modules it ran.
void read_job_kinds(const OutputText& t, const InputDeck& deck, LogSummary& s) {
  const auto ran = [&t](std::string_view module) {
    return contains(t.head, module) || contains(t.tail, module);
  };
  for (const auto& task : deck.tasks) {
    const std::string& op = task.second;
    s.optimisation |= op == "optimize" || op == "saddle";
    s.frequency |= op == "freq" || op == "frequencies" || op == "hessian";
    s.dynamics |= op == "dynamics" || op == "qmd";
    s.excited_states |= task.first == "tddft";
  }
  s.optimisation |= ran("NWChem Geometry Optimization") || ran("NWChem STEPPER Module");
  s.frequency |= ran("NWChem Nuclear Hessian and Frequency Analysis");
  s.dynamics |= ran("NWChem QMD Module");
  s.excited_states |= ran("NWChem TDDFT Module") || ran("NWChem Real-Time TDDFT Module");
  // The driver's "Optimization converged" follows its last step.
  s.converged = s.optimisation && contains(t.tail, "Optimization converged");
}

// The last <S**2> of the SCF: the DFT module's "<S2> =      0.7523 (Exact =     0.7500)", the
// UHF's "S^2 =      0.7552" after its "Sz(Sz+1) =". A TDDFT job's roots print theirs without
// the exact value ("<S2> =   0.9599"): those are the excited states'.
void read_s2(const OutputText& t, LogSummary& s) {
  const Place dft = last_place(t, "(Exact =");
  const Place uhf = last_place(t, " S^2 =");
  const Place& p = after(dft, uhf) ? dft : uhf;
  if (!p.found()) return;
  s.has_s2 = number_at(p, &p == &dft ? "<S2> =" : " S^2 =", s.s2);
}

void summarize(const OutputText& text, LogSummary& s) {
  s.termination =
      last_ending(text.tail, {"Total times  cpu:"},
                  {"This error has not yet been assigned to a category", "error is most commonly",
                   "For more information see the NWChem manual"});
  const InputDeck deck = read_input_deck(text.head);
  std::vector<std::size_t> scf_totals;
  read_levels(text.tail, s.levels, &scf_totals);
  if (s.levels.empty() && !text.whole) read_levels(text.head, s.levels, nullptr);
  const std::string level = job_level(text.tail, deck);
  choose_final_energy(level.empty() ? job_level(text.head, deck) : level, s);
  if (text.whole) s.scf_count = static_cast<int>(scf_totals.size());

  // Charge and multiplicity of the last SCF: the DFT module's or the SCF module's header,
  // whichever comes later.
  Place dft_place;
  int charge = 0, multiplicity = 0;
  const bool dft = read_dft_header(text, dft_place, charge, multiplicity);
  const ScfHeader scf = read_scf_header(text);
  if (dft && !after(scf.place, dft_place)) {
    s.has_charge = true, s.charge = charge, s.multiplicity = multiplicity;
  } else if (scf.has_charge) {
    s.has_charge = true, s.charge = scf.charge, s.multiplicity = scf.multiplicity;
  }

  std::vector<std::string> symbols;
  if (read_atoms(text, symbols)) {
    s.atom_count = static_cast<int>(symbols.size());
    s.formula = hill_formula(symbols);
  }
  s.basis = read_basis(text);

  // The method: a correlated level's name, else the DFT's functional, else the SCF's
  // wavefunction.
  const std::string& final_level = s.final_energy.level;
  if (s.final_energy.found && !is_scf_level(final_level) && final_level != "TDDFT") {
    s.method = final_level;
  } else if (s.final_energy.found ? final_level != "SCF" : dft) {
    s.method = read_functional(text, deck);
  } else {
    s.method = scf.wavefunction.empty() && s.final_energy.found ? "HF" : scf.wavefunction;
  }

  read_job_kinds(text, deck, s);
  // "Calculation failed to converge" comes before the total energy of the SCF that failed:
  // after the last SCF total but one, it is the last SCF's.
  const std::size_t failed = find_last(text.tail, "Calculation failed to converge");
  const std::size_t before = scf_totals.size() < 2 ? npos : scf_totals[scf_totals.size() - 2];
  s.scf_failed = failed != npos && (before == npos || failed > before);
  read_s2(text, s);
}

}  // namespace

const EngineFormat kNwchemFormat = {Engine::nwchem, "NWChem",  announces,
                                    nullptr,        summarize, final_energy};
