#include "log_summary.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "chem_formula.h"

namespace {

constexpr std::size_t npos = std::string_view::npos;

// The line on which Gaussian prints the total energy of a TD job's state of interest.
constexpr std::string_view kTdTotalEnergy = "Total Energy, E(TD-HF/TD-DFT) =";

std::string upper(std::string_view text) {
  std::string s(text);
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

bool starts_with(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool contains(std::string_view text, std::string_view what) { return text.find(what) != npos; }

std::string_view trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

// The parts of `text` between the separators `separator`, empty parts included.
std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  for (std::size_t begin = 0;;) {
    const std::size_t end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end == npos ? npos : end - begin));
    if (end == npos) return parts;
    begin = end + separator.size();
  }
}

// The lines of `text` without their line ends.
std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> lines = split(text, "\n");
  for (std::string_view& line : lines) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  }
  return lines;
}

// The whole line of `text` that holds position `at`.
std::string_view line_at(std::string_view text, std::size_t at) {
  const std::size_t begin = text.rfind('\n', at);
  const std::size_t start = begin == npos ? 0 : begin + 1;
  const std::size_t end = text.find('\n', at);
  return text.substr(start, end == npos ? npos : end - start);
}

// A number that fills all of `text`, into `value`.
bool read_number(std::string_view text, double& value) {
  const std::string s(trim(text));
  char* end = nullptr;
  value = std::strtod(s.c_str(), &end);
  return !s.empty() && end == s.c_str() + s.size();
}

Engine recognise_engine(std::string_view head, std::string_view tail) {
  if (contains(head, "Entering Gaussian System") || contains(head, "Gaussian, Inc.")) {
    return Engine::gaussian;
  }
  if (contains(head, "* O   R   C   A *")) return Engine::orca;
  if (contains(head, "Welcome to Q-Chem")) return Engine::qchem;
  if (contains(head, "Northwest Computational Chemistry Package")) return Engine::nwchem;
  if (contains(tail, "termination of Gaussian")) return Engine::gaussian;
  return Engine::unknown;
}

// How the run ended: the last of its engine's normal and error endings in `tail`.
Termination read_termination(Engine engine, std::string_view tail) {
  std::vector<std::string_view> normal, error;
  switch (engine) {
    case Engine::gaussian:
      normal = {"Normal termination of Gaussian"};
      error = {"Error termination"};
      break;
    case Engine::orca:
      normal = {"ORCA TERMINATED NORMALLY"};
      error = {"ORCA finished by error termination", "aborting the run"};
      break;
    case Engine::qchem:
      normal = {"Thank you very much for using Q-Chem"};
      error = {"Q-Chem fatal error"};
      break;
    case Engine::nwchem:
      normal = {"Total times  cpu:"};
      error = {"This error has not yet been assigned to a category", "error is most commonly"};
      break;
    case Engine::unknown:
      return Termination::none;
  }
  const auto last = [&](const std::vector<std::string_view>& texts) {
    std::size_t at = npos;
    for (const std::string_view t : texts) {
      const std::size_t found = tail.rfind(t);
      if (found != npos && (at == npos || found > at)) at = found;
    }
    return at;
  };
  const std::size_t normal_at = last(normal), error_at = last(error);
  if (error_at != npos && (normal_at == npos || error_at > normal_at)) return Termination::error;
  return normal_at != npos ? Termination::normal : Termination::none;
}

// Reads a charge and a multiplicity from `text` with the scanf format `format` (two %lld). A
// number beyond the range of int is taken as the nearest int, never wrapped, so that the range
// check of a summary sees it as the corrupt text it is.
//
//   "4294967296,1" -> 2147483647, 1
bool read_charge_pair(const char* text, const char* format, int& charge, int& multiplicity) {
  long long c = 0, m = 0;
  if (std::sscanf(text, format, &c, &m) != 2) return false;
  charge = static_cast<int>(std::clamp<long long>(c, INT_MIN, INT_MAX));
  multiplicity = static_cast<int>(std::clamp<long long>(m, INT_MIN, INT_MAX));
  return true;
}

// The atom symbol that begins an atom line of an input echo ("C   1  B1", "C,0,1.2,0.,0.",
// "C1 -4.8 0.6 0.3"), or "" for any other line.
std::string atom_symbol(std::string_view line) {
  line = trim(line);
  std::size_t letters = 0;
  while (letters < line.size() && std::isalpha(static_cast<unsigned char>(line[letters]))) {
    ++letters;
  }
  if (letters == 0 || letters > 2) return "";
  const char next = letters < line.size() ? line[letters] : ' ';
  if (next != ' ' && next != ',' && next != '-' && next != '(' && next != '\t' &&
      !std::isdigit(static_cast<unsigned char>(next))) {
    return "";
  }
  const std::string symbol(line.substr(0, letters));
  return atomic_number(symbol) > 0 ? symbol : "";
}

// What the head of a Gaussian output states: its route section, its charge and multiplicity,
// its atoms.
struct GaussianHead {
  std::string route;  // the route section's lines joined
  bool has_charge = false;
  int charge = 0;
  int multiplicity = 0;
  int atom_count = 0;  // the "NAtoms=" line, else the atoms listed after the charge line
  std::vector<std::string> symbols;
};

GaussianHead read_gaussian_head(std::string_view head, bool whole_text) {
  GaussianHead facts;
  const std::vector<std::string_view> lines = lines_of(head);
  std::size_t i = 0;
  while (i < lines.size() && !starts_with(trim(lines[i]), "#")) ++i;
  // The route runs to the line of dashes; each wrapped line begins with one blank.
  for (; i < lines.size() && !starts_with(trim(lines[i]), "---"); ++i) {
    facts.route += std::string(lines[i].substr(std::min<std::size_t>(1, lines[i].size())));
  }
  for (i = 0; i < lines.size(); ++i) {
    const std::string line(lines[i]);
    if (read_charge_pair(line.c_str(), " Charge = %lld Multiplicity = %lld", facts.charge,
                         facts.multiplicity)) {
      facts.has_charge = true;
      break;
    }
  }
  // The atoms follow the charge line, after at most two lines of other text. A list that runs
  // to the end of a head cut from a longer text is a part of the molecule: its atoms and
  // formula are unknown.
  std::size_t skipped = 0;
  for (++i; i < lines.size(); ++i) {
    const std::string symbol = atom_symbol(lines[i]);
    if (!symbol.empty()) {
      facts.symbols.push_back(symbol);
    } else if (!facts.symbols.empty() || ++skipped > 2) {
      break;
    }
  }
  if (i >= lines.size() && !whole_text) facts.symbols.clear();
  facts.atom_count = static_cast<int>(facts.symbols.size());
  const std::size_t natoms = head.find("NAtoms=");
  if (natoms != npos)
    facts.atom_count = std::atoi(std::string(head.substr(natoms + 7, 12)).c_str());
  return facts;
}

// The name of a route keyword: "opt=(tight)" -> "opt", "td(nstates=5)" -> "td".
std::string keyword_name(std::string_view word) {
  return std::string(word.substr(0, word.find_first_of("=(")));
}

// The route's words in lower case, without the leading "#", "#p", "#n" or "#t".
std::vector<std::string> route_words(std::string_view route) {
  std::vector<std::string> words;
  for (const std::string_view part : split(route, " ")) {
    std::string word(part);
    for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (word == "#" || word == "#p" || word == "#n" || word == "#t") continue;
    if (!word.empty() && word[0] == '#') word.erase(0, 1);
    if (!word.empty()) words.push_back(word);
  }
  return words;
}

// The method and basis of a route: its word "METHOD/BASIS", in upper case.
void route_level(std::string_view route, std::string& method, std::string& basis) {
  for (const std::string& word : route_words(route)) {
    const std::size_t slash = word.find('/');
    if (slash == npos || starts_with(word, "iop") || word.substr(0, slash).find('=') != npos) {
      continue;
    }
    method = upper(word.substr(0, slash));
    basis = upper(word.substr(slash + 1));
    return;
  }
}

// The kind of a method key (see method_key()) whose total energy is not the SCF energy.
std::string kind_of_method(const std::string& m) {
  if (m == "TD" || m == "TDA") return "TD";
  if (starts_with(m, "EOM")) return "EOM";
  for (const char* p : {"CCSD", "CCD", "QCISD", "BD"}) {
    if (starts_with(m, p)) return "coupled cluster";
  }
  for (const char* p : {"MP2", "MP3", "MP4", "MP5"}) {
    if (starts_with(m, p)) return "MPn";
  }
  if (starts_with(m, "CIS") || starts_with(m, "CID")) return "CI";
  if (starts_with(m, "ONIOM")) return "ONIOM";
  if (starts_with(m, "COUNTERPOISE")) return "counterpoise";
  for (const char* p : {"CBS-QB3", "CBS-4M", "CBS-APNO", "CBSQB3", "G1", "G2", "G2MP2", "G3",
                        "G3MP2", "G3B3", "G3MP2B3", "G4", "G4MP2", "W1U", "W1BD", "W1RO"}) {
    if (m == p) return "composite";
  }
  if (contains(m, "2PLYP") || starts_with(m, "DSD")) return "double hybrid";
  return "";
}

bool is_level_label(std::string_view label) {
  if (label == "HF") return true;
  for (const char* p :
       {"MP", "CC", "QCI", "CI", "BD", "CBS", "G1", "G2", "G3", "G4", "W1", "ONIOM"}) {
    if (starts_with(label, p)) return true;
  }
  return false;
}

// A level of theory as ORCA, Q-Chem and NWChem name it in their total-energy lines, in any
// letter case: the SCF ("SCF", "DFT", "HF") or a correlated level ("MP2", "MBPT(2)", "RI-MP2",
// "CCSD(T)", "QCISD").
bool is_level_word(std::string_view word) {
  const std::string w = upper(word);
  if (w == "SCF" || w == "DFT") return true;
  for (const char* p : {"MBPT", "RI-", "SCS-", "DLPNO-", "LPNO-", "LCC"}) {
    if (starts_with(w, p)) return true;
  }
  return is_level_label(w);
}

// The blank-separated words of a line.
std::vector<std::string_view> words_of(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t at = 0;;) {
    const std::size_t begin = line.find_first_not_of(" \t\r", at);
    if (begin == npos) return words;
    at = std::min(line.find_first_of(" \t\r", begin), line.size());
    words.push_back(line.substr(begin, at - begin));
  }
}

// Whether `word` is `name` in any letter case, followed by a colon or not ("ENERGY:").
bool is_word(std::string_view word, std::string_view name) {
  if (!word.empty() && word.back() == ':') word.remove_suffix(1);
  return upper(word) == upper(name);
}

// The level whose total energy a line of an output of `engine` prints, and that energy, as the
// engine writes them; false for any other line. ORCA's "FINAL SINGLE POINT ENERGY" gives the
// level "": the job's final energy, of the last level named before it.
//   ORCA     "FINAL SINGLE POINT ENERGY  -76.24", "E(CCSD(T))  ...  -76.24",
//            "MP2 TOTAL ENERGY:  -76.23 Eh"
//   Q-Chem   "Total energy in the final basis set =  -76.02" (the SCF),
//            "MP2         total energy =  -76.22 au", "CCSD(T) total energy  =  -76.24"
//   NWChem   "Total DFT energy =  -76.42", "Total SCF energy =", "Total MP2 energy  -76.22",
//            "Total CCSD(T) energy:  -76.24", "CCSD(T) total energy / hartree  =  -76.24"
bool read_energy_line(Engine engine, std::string_view line, std::string& level, double& hartree) {
  const std::vector<std::string_view> w = words_of(line);
  if (w.size() < 3) return false;
  std::size_t value = 0;  // the first word that may hold the number
  if (engine == Engine::orca && w.size() > 4 && w[0] == "FINAL" && w[1] == "SINGLE" &&
      w[2] == "POINT" && w[3] == "ENERGY") {
    level.clear(), value = 4;
  } else if (engine == Engine::orca && starts_with(w[0], "E(") && w[0].back() == ')' &&
             is_level_word(w[0].substr(2, w[0].size() - 3))) {
    level = upper(w[0].substr(2, w[0].size() - 3)), value = 1;
  } else if (engine == Engine::qchem && contains(line, "Total energy in the final basis set")) {
    level = "SCF", value = 7;
  } else if (engine == Engine::nwchem && w[0] == "Total" && is_word(w[2], "energy") &&
             is_level_word(w[1])) {
    level = upper(w[1]), value = 3;
  } else if (engine != Engine::gaussian && is_word(w[1], "total") && is_word(w[2], "energy") &&
             is_level_word(w[0])) {
    level = upper(w[0]), value = 3;
  } else {
    return false;
  }
  // The number follows the label after "=", ":", "...", "/ hartree" or nothing.
  for (; value < w.size(); ++value) {
    if (read_number(w[value], hartree)) return true;
    if (w[value] != "=" && w[value] != ":" && w[value] != "..." && w[value] != "/" &&
        !is_word(w[value], "hartree")) {
      return false;
    }
  }
  return false;
}

}  // namespace

const char* engine_name(Engine engine) {
  switch (engine) {
    case Engine::gaussian:
      return "Gaussian";
    case Engine::orca:
      return "ORCA";
    case Engine::qchem:
      return "Q-Chem";
    case Engine::nwchem:
      return "NWChem";
    case Engine::unknown:
      break;
  }
  return "unknown";
}

const char* termination_name(Termination termination) {
  switch (termination) {
    case Termination::normal:
      return "normal";
    case Termination::error:
      return "error";
    case Termination::none:
      break;
  }
  return "none";
}

bool read_gaussian_archive(std::string_view text, GaussianArchive& archive) {
  const std::size_t begin = text.rfind("\n 1\\1\\");
  if (begin == npos) return false;
  // The entry as the engine wrote it before wrapping: every line of it begins with one blank,
  // and the wrap may fall anywhere, inside the closing "\\@" too ("...]\\" then " @"). The
  // lines are joined first; the entry ends at the first "\\@" of the joined text.
  std::string entry;
  std::size_t end = npos;
  for (const std::string_view line : lines_of(text.substr(begin + 1))) {
    if (line.empty() || line[0] != ' ') return false;  // cut off before its end
    const std::size_t joined = entry.size();
    entry.append(line.substr(1));
    end = entry.find("\\\\@", joined < 2 ? 0 : joined - 2);  // it may begin on the line before
    if (end != npos) break;
  }
  if (end == npos) return false;
  entry.resize(end);
  const std::vector<std::string_view> sections = split(entry, "\\\\");
  if (sections.size() < 5) return false;
  const std::vector<std::string_view> head = split(sections[0], "\\");
  if (head.size() < 7) return false;
  archive = GaussianArchive{};
  archive.job_type = head[3];
  archive.method = head[4];
  archive.basis = head[5];
  archive.formula = head[6].substr(0, head[6].find('('));
  archive.route = sections[1];
  const std::vector<std::string_view> molecule = split(sections[3], "\\");
  if (!read_charge_pair(std::string(molecule[0]).c_str(), "%lld,%lld", archive.charge,
                        archive.multiplicity)) {
    return false;
  }
  archive.atom_count = static_cast<int>(molecule.size()) - 1;
  for (const std::string_view field : split(sections[4], "\\")) {
    const std::size_t equals = field.find('=');
    LevelEnergy level{std::string(field.substr(0, equals)), 0.0};
    if (equals != npos && is_level_label(level.label) &&
        read_number(field.substr(equals + 1), level.hartree)) {
      archive.levels.push_back(level);
    }
  }
  return true;
}

std::string method_key(std::string_view method) {
  // The ground-state method is the first word: "RB3LYP TD-FC" is B3LYP with TD on top.
  method = trim(method);
  std::string key = upper(method.substr(0, method.find(' ')));
  if (starts_with(key, "RO") && key.size() > 2) {
    key.erase(0, 2);
  } else if ((starts_with(key, "R") || starts_with(key, "U")) && key.size() > 1) {
    key.erase(0, 1);
  }
  if (key.size() > 3 && key.compare(key.size() - 3, 3, "-FC") == 0) key.resize(key.size() - 3);
  return key;
}

std::string not_scf_kind(std::string_view method, std::string_view route) {
  // An excited-state treatment follows the ground-state method after a blank: "RB3LYP TD-FC".
  std::string kind = contains(upper(method), " TD") ? "TD" : kind_of_method(method_key(method));
  for (const std::string& word : route_words(route)) {
    if (!kind.empty()) break;
    const std::size_t slash = word.find('/');
    kind = kind_of_method(method_key(slash != npos ? word.substr(0, slash) : keyword_name(word)));
  }
  return kind;
}

FinalEnergyLine read_final_energy(Engine engine, std::string_view text) {
  FinalEnergyLine result;
  if (engine == Engine::gaussian || engine == Engine::unknown) return result;
  std::string named;  // the last level named so far
  std::string level;
  double hartree = 0.0;
  for (const std::string_view line : lines_of(text)) {
    // Most lines hold no energy: only those that say "energy" or "E(" are read word by word.
    if (!contains(line, "nergy") && !contains(line, "NERGY") && !contains(line, "E(")) continue;
    if (!read_energy_line(engine, line, level, hartree)) continue;
    if (level.empty()) level = named.empty() ? "SCF" : named;
    named = level;
    result = {true, std::string(trim(line)), hartree, level};
  }
  return result;
}

LogSummary summarize_log(std::string_view head, std::string_view tail, bool whole_text) {
  LogSummary s;
  s.engine = recognise_engine(head, tail);
  s.termination = read_termination(s.engine, tail);
  if (s.engine != Engine::gaussian) {
    s.final_energy = read_final_energy(s.engine, tail);
    if (!s.final_energy.found) s.final_energy = read_final_energy(s.engine, head);
    return s;
  }
  const GaussianHead facts = read_gaussian_head(head, whole_text);
  GaussianArchive archive;
  s.from_archive = read_gaussian_archive(tail, archive);
  const std::string route = facts.route.empty() ? archive.route : facts.route;
  if (s.from_archive) {
    s.has_charge = true;
    s.charge = archive.charge;
    s.multiplicity = archive.multiplicity;
    s.atom_count = archive.atom_count;
    s.formula = archive.formula;
    s.method = archive.method;
    s.basis = archive.basis;
    s.job_type = archive.job_type;
    s.levels = archive.levels;
  } else {
    s.has_charge = facts.has_charge;
    s.charge = facts.charge;
    s.multiplicity = facts.multiplicity;
    s.atom_count = facts.atom_count;
    if (!facts.symbols.empty()) s.formula = hill_formula(facts.symbols);
    route_level(route, s.method, s.basis);
  }
  for (const std::string& word : route_words(route)) {
    const std::string name = keyword_name(word);
    s.optimisation |= name == "opt";
    s.scan |= name == "scan";
    s.frequency |= name == "freq";
    s.dynamics |= name == "admp" || name == "bomd";
  }
  const std::string job = upper(s.job_type);
  s.optimisation |= contains(job, "OPT") || job == "FTS" || job == "PTS";
  s.scan |= job == "SCAN" || contains(tail, "on scan point");
  s.frequency |= job == "FREQ";
  s.dynamics |= job == "ADMP" || job == "BOMD";
  s.converged =
      s.optimisation && (contains(tail, "Stationary point found") || job == "FOPT" || job == "FTS");
  s.not_scf = not_scf_kind(s.method, route);
  // A TD job prints the total energy of its state of interest outside the archive entry.
  const std::size_t td = tail.rfind(kTdTotalEnergy);
  if (td != npos) {
    const std::string_view line = line_at(tail, td);
    const std::size_t equals = line.find('=');
    s.levels.push_back(
        {"E(TD-HF/TD-DFT)", std::strtod(std::string(line.substr(equals + 1)).c_str(), nullptr)});
  }
  // Numbers far outside chemistry are corrupt text, not a charge and multiplicity.
  if (s.charge < -1000 || s.charge > 1000 || s.multiplicity < 1 || s.multiplicity > 1000) {
    s.has_charge = false;
    s.charge = s.multiplicity = 0;
  }
  return s;
}
