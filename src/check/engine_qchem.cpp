// Q-Chem's output (versions 4 to 6): its banner, its endings, the echo of its input after
// "User input:" (the $molecule's "charge multiplicity" line and atoms; the $rem's METHOD, or
// EXCHANGE and CORRELATION, BASIS, JOBTYPE, and the excited states it asks for), the last
// "Standard Nuclear Orientation" table, "Requested basis set is", its SCF failures, "<S^2> =",
// "OPTIMIZATION CONVERGED", and its total energies: "Total energy in the final basis set" of
// each SCF, "<level> total energy =" ("MP2         total energy =  -76.22 au", "CCSD(T) total
// energy  =  -76.24"), ccman2's "MP3 energy  = -76.23" and ccman's "EMP4SDQ  =  -76.23".
//
// An input of several jobs (joined by "@@@") echoes each job's input before it runs: the last
// echo read is the job whose energy is final.
#include <cctype>
#include <cstdlib>
#include <map>

#include "chem_formula.h"
#include "engine_format.h"
#include "output_text.h"

namespace {

constexpr std::string_view kEcho = "User input:";
constexpr std::string_view kOrientation = "Standard Nuclear Orientation";

bool announces(std::string_view head) { return contains(head, "Welcome to Q-Chem"); }

bool is_dashes(std::string_view line) {
  line = trim(line);
  return !line.empty() && line.find_first_not_of('-') == npos;
}

std::string lower(std::string_view text) {
  std::string s(text);
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// One job's input as echoed: the lines of each section ("$rem" -> its lines), and its $rem's
// keywords in lower case ("method" -> "b3lyp").
struct JobInput {
  bool found = false;
  std::map<std::string, std::vector<std::string_view>> sections;
  std::map<std::string, std::string> rem;
};

// The input echoed after the "User input:" at `at` in `text`, up to the line of dashes that
// closes it. Not found when the text ends first.
JobInput read_echo(std::string_view text, std::size_t at) {
  JobInput job;
  std::vector<std::string_view>* section = nullptr;
  std::string_view line;
  std::size_t pos = at;
  next_line(text, pos, line);  // the heading
  next_line(text, pos, line);  // its dashes
  while (next_line(text, pos, line)) {
    line = trim(line);
    if (is_dashes(line)) {
      job.found = true;
      break;
    }
    if (starts_with(line, "$")) {
      const std::string name = lower(words_of(line)[0]);
      section = name == "$end" ? nullptr : &job.sections[name];
    } else if (section != nullptr) {
      section->push_back(line);
    }
  }
  if (!job.found) return JobInput{};
  for (const std::string_view line : job.sections["$rem"]) {  // "method b3lyp", "BASIS = sto-3g"
    std::string text = lower(line.substr(0, line.find('!')));
    for (char& c : text) c = c == '=' ? ' ' : c;
    const std::vector<std::string_view> w = words_of(text);
    if (w.size() >= 2) job.rem[std::string(w[0])] = std::string(w[1]);
  }
  return job;
}

// The last job's input echoed in `text`, else not found.
JobInput last_echo(std::string_view text) {
  for (std::size_t at = find_last(text, kEcho); at != npos;
       at = at == 0 ? npos : find_last(text, kEcho, at - 1)) {
    if (at == 0 || text[at - 1] == '\n') {
      JobInput job = read_echo(text, at);
      if (job.found) return job;
    }
  }
  return JobInput{};
}

std::string rem_value(const JobInput& job, const char* keyword) {
  const auto it = job.rem.find(keyword);
  return it == job.rem.end() ? "" : it->second;
}

// The method the $rem asks for, upper case: METHOD ("b3lyp", "mp2", "ccsd(t)"), else EXCHANGE
// with a wavefunction CORRELATION ("hf" and "mp2": "MP2") or a functional's ("b" and "lyp":
// "B+LYP"); "" without either.
std::string job_method(const JobInput& job) {
  const std::string method = rem_value(job, "method");
  if (!method.empty()) return upper(method);
  const std::string exchange = rem_value(job, "exchange"),
                    correlation = rem_value(job, "correlation");
  if (exchange.empty()) return "";
  if (correlation.empty() || correlation == "none") return upper(exchange);
  if (exchange == "hf" && is_level_name(correlation)) return upper(correlation);
  return upper(exchange) + "+" + upper(correlation);
}

// The level whose total is the job's energy, as read_energy_line() names it: "SCF" for HF and
// DFT, the correlated level otherwise ("MP4SDQ" -> "MP4(SDQ)", "RIMP2" -> "RI-MP2"); "" when the
// method is unknown.
std::string job_level(const std::string& method) {
  if (method.empty()) return "";
  if (method == "MP4SDQ") return "MP4(SDQ)";
  if (method == "RIMP2") return "RI-MP2";
  if (method != "HF" && is_level_name(method)) return method;
  return "SCF";
}

// The level whose total energy a line prints, and that energy; false for any other line.
//   "Total energy in the final basis set =  -76.0" (the SCF), "MP2  total energy = -76.2 au",
//   "MP3 energy  = -76.23" (ccman2), "EMP4SDQ  =  -76.23" (ccman)
bool read_energy_line(std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;
  if (contains(line, "Total energy in the final basis set")) {
    level = "SCF", value = 7;
  } else if (is_word(w[1], "total") && is_word(w[2], "energy") && is_level_name(w[0])) {
    level = upper(w[0]), value = 3;
  } else if (w[1] == "energy" && w[2] == "=" && is_level_name(w[0]) && upper(w[0]) != "SCF" &&
             upper(w[0]) != "HF") {  // ccman2 repeats the SCF's total, rounded: not read
    level = upper(w[0]), value = 2;
  } else if (w[1] == "=" && starts_with(w[0], "EMP")) {
    level = w[0] == "EMP4SDQ" ? "MP4(SDQ)" : std::string(w[0].substr(1));
    value = 1;
  } else {
    return false;
  }
  return energy_after_label(w, value, hartree);
}

// The total energies of `text` into `levels` (each level's last); the number of SCF totals.
int read_levels(std::string_view text, std::vector<LevelEnergy>& levels) {
  std::string level;
  double hartree = 0.0;
  int scf_totals = 0;
  for (const std::string_view line : lines_of(text)) {
    if (!contains(line, "nergy") && !contains(line, "NERGY") && !contains(line, "EMP")) continue;
    if (!read_energy_line(line, level, hartree)) continue;
    note_level(levels, level, hartree, line);
    scf_totals += level == "SCF";
  }
  return scf_totals;
}

FinalEnergyLine final_energy(std::string_view block) {
  LogSummary s;
  read_levels(block, s.levels);
  choose_final_energy(job_level(job_method(last_echo(block))), s);
  return s.final_energy;
}

// The element symbols of the "Standard Nuclear Orientation" table at `at`: rows "  1  C  1.36
// 0.27 0.00" between its dashes. False when the text ends first.
bool read_orientation(std::string_view text, std::size_t at, std::vector<std::string>& symbols) {
  symbols.clear();
  std::string_view line;
  std::size_t pos = at;
  for (int i = 0; i < 3; ++i) next_line(text, pos, line);  // heading, column names, dashes
  while (next_line(text, pos, line)) {
    if (is_dashes(line)) return !symbols.empty();
    const std::vector<std::string_view> w = words_of(line);
    if (w.size() < 5) return false;
    symbols.emplace_back(w[1]);
  }
  return false;
}

// The atoms of the $molecule after its charge line: Cartesian or Z-matrix lines up to a blank
// line (the Z-matrix's variables follow it). Empty when any line is no atom or the molecule is
// read from an earlier job.
std::vector<std::string> input_atoms(const std::vector<std::string_view>& molecule) {
  std::vector<std::string> symbols;
  for (std::size_t i = 1; i < molecule.size() && !molecule[i].empty(); ++i) {
    std::string symbol = atom_symbol(molecule[i]);
    if (symbol.empty()) return {};
    symbols.push_back(std::move(symbol));
  }
  return symbols;
}

void read_atoms(const OutputText& t, const JobInput& job, LogSummary& s) {
  std::vector<std::string> symbols;
  const std::size_t in_tail = find_last(t.tail, kOrientation),
                    in_head = find_last(t.head, kOrientation);
  if (!((in_tail != npos && read_orientation(t.tail, in_tail, symbols)) ||
        (in_head != npos && read_orientation(t.head, in_head, symbols)))) {
    const auto molecule = job.sections.find("$molecule");
    if (molecule != job.sections.end()) symbols = input_atoms(molecule->second);
  }
  for (const std::string& symbol : symbols) {
    if (atomic_number(symbol) == 0) return;  // a ghost atom or dummy centre: no count
  }
  if (!symbols.empty()) {
    s.atom_count = static_cast<int>(symbols.size());
    s.formula = hill_formula(symbols);
  }
}

// The $molecule's first line: "0 1", "+1 2" ("read" takes the previous job's: unknown here).
void read_state(const JobInput& job, LogSummary& s) {
  const auto molecule = job.sections.find("$molecule");
  if (molecule == job.sections.end() || molecule->second.empty()) return;
  const std::vector<std::string_view> w = words_of(molecule->second[0]);
  if (w.size() != 2) return;
  s.has_charge = read_charge_pair((std::string(w[0]) + " " + std::string(w[1])).c_str(),
                                  "%lld %lld", s.charge, s.multiplicity);
}

// The job's kinds from its JOBTYPE and the excited states it asks for.
void read_job(const OutputText& t, const JobInput& job, LogSummary& s) {
  std::string type = rem_value(job, "jobtype");
  if (type.empty()) type = rem_value(job, "job_type");  // as some input generators write it
  s.scan = type == "pes_scan";
  s.optimisation = type == "opt" || type == "ts" || s.scan;
  s.frequency = type == "freq";
  s.dynamics = type == "aimd" || type == "bomd";
  for (const char* states : {"cis_n_roots", "ee_states", "ee_singlets", "ee_triplets", "sf_states",
                             "ip_states", "ea_states", "dip_states", "dsf_states"}) {
    const std::string n = rem_value(job, states);
    s.excited_states |= !n.empty() && n != "0" && n != "false";
  }
  s.excited_states |= starts_with(rem_value(job, "method"), "eom-");
  s.converged = s.optimisation && (contains(t.tail, "OPTIMIZATION CONVERGED") ||
                                   contains(t.tail, "TRANSITION STATE CONVERGED"));
}

// Whether the last SCF failed: "SCF failed to converge" or "Convergence failure" after the last
// "Convergence criterion met" of an SCF's iterations.
bool scf_failed(std::string_view tail) {
  std::size_t failed = find_last(tail, "SCF failed to converge");
  const std::size_t failure = find_last(tail, "Convergence failure");
  if (failure != npos && (failed == npos || failure > failed)) failed = failure;
  const std::size_t met = find_last(tail, "Convergence criterion met");
  return failed != npos && (met == npos || failed > met);
}

// The last place of `marker`'s line: in the tail, else in the head.
std::string_view last_line(const OutputText& t, std::string_view marker) {
  const std::string_view line = last_line_with(t.tail, marker);
  return line.empty() ? last_line_with(t.head, marker) : line;
}

void summarize(const OutputText& text, LogSummary& s) {
  s.termination =
      last_ending(text.tail, {"Thank you very much for using Q-Chem"}, {"Q-Chem fatal error"});
  JobInput job = text.whole ? JobInput{} : last_echo(text.tail);
  if (!job.found) job = last_echo(text.head);
  read_state(job, s);
  read_atoms(text, job, s);
  const std::string_view basis = last_line(text, "Requested basis set is");
  s.basis = basis.empty() ? upper(rem_value(job, "basis"))
                          : upper(trim(basis.substr(basis.find(" is ") + 4)));
  s.method = job_method(job);
  read_job(text, job, s);
  s.scf_failed = scf_failed(text.tail);
  const std::string_view s2 = last_line(text, "<S^2> =");
  s.has_s2 = !s2.empty() && number_after(s2, s2.find('=') + 1, s.s2);
  const int totals = read_levels(text.tail, s.levels);
  if (s.levels.empty() && !text.whole) read_levels(text.head, s.levels);
  if (text.whole) s.scf_count = totals;
  choose_final_energy(job_level(s.method), s);
}

}  // namespace

const EngineFormat kQchemFormat = {Engine::qchem, "Q-Chem",  announces,
                                   nullptr,       summarize, final_energy};
