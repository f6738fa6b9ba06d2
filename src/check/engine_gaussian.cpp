// Gaussian's output: its banner, its endings, the closing archive entry (the block from
// "1\1\" to "\\@" at the end of every finished job, wrapped at 70 characters), and where there
// is none the head of the file (the route section, the charge and multiplicity line, the atoms);
// its SCF failures and its <S**2>. Its energy is the last "SCF Done" line, which the energy
// job's reader finds, or a level of the archive entry.
#include <algorithm>
#include <cstdlib>

#include "chem_formula.h"
#include "engine_format.h"
#include "output_text.h"

namespace {

// The line on which Gaussian prints the total energy of a TD job's state of interest.
constexpr std::string_view kTdTotalEnergy = "Total Energy, E(TD-HF/TD-DFT) =";

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
  std::vector<std::string_view> lines = lines_of(head);
  // A head cut from a longer text ends at a line end: the empty rest is no line of its own.
  if (!whole_text && !lines.empty() && lines.back().empty()) lines.pop_back();
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

bool announces(std::string_view head) {
  return contains(head, "Entering Gaussian System") || contains(head, "Gaussian, Inc.");
}

// The last <S**2> of an SCF, before annihilation: " <Sx>= 0.0 <Sy>= 0.0 <Sz>= 0.5 <S**2>=
// 0.7778 S= 0.5138"; the initial guess's is not the SCF's.
void read_s2(std::string_view tail, LogSummary& s) {
  for (std::size_t at = tail.size(); at > 0;) {
    const std::size_t found = find_last(tail, "<S**2>=", at - 1);
    if (found == npos) return;
    const std::string_view line = line_at(tail, found);
    at = found;
    if (contains(line, "Initial guess")) continue;
    s.has_s2 = number_after(tail.substr(0, tail.find('\n', found)), found + 7, s.s2);
    return;
  }
}

void summarize(const OutputText& text, LogSummary& s) {
  const std::string_view head = text.head, tail = text.tail;
  s.termination = last_ending(tail, {"Normal termination of Gaussian"}, {"Error termination"});
  const GaussianHead facts = read_gaussian_head(head, text.whole);
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
  const std::size_t td = find_last(tail, kTdTotalEnergy);
  if (td != npos) {
    const std::string_view line = line_at(tail, td);
    const std::size_t equals = line.find('=');
    s.levels.push_back({"E(TD-HF/TD-DFT)",
                        std::strtod(std::string(line.substr(equals + 1)).c_str(), nullptr),
                        std::string(trim(line))});
  }
  // An SCF that did not converge: "Convergence failure -- run terminated." ends the run;
  // ">>>>>>>>>> Convergence criterion not met." comes before the "SCF Done" line of an SCF that
  // the run takes unconverged. Either, after the last SCF but one, is the last SCF's.
  std::size_t failed = npos;
  for (const char* t : {"Convergence failure", ">>>>>>>>>> Convergence criterion not met"}) {
    const std::size_t at = find_last(tail, t);
    if (at != npos && (failed == npos || at > failed)) failed = at;
  }
  const std::size_t done = find_last(tail, "SCF Done");
  const std::size_t before =
      done == npos || done == 0 ? npos : find_last(tail, "SCF Done", done - 1);
  s.scf_failed = failed != npos && (before == npos || failed > before);
  read_s2(tail, s);
}

FinalEnergyLine no_final_energy(std::string_view) { return {}; }

}  // namespace

const EngineFormat kGaussianFormat = {Engine::gaussian,          "Gaussian", announces,
                                      "termination of Gaussian", summarize,  no_final_energy};

bool read_gaussian_archive(std::string_view text, GaussianArchive& archive) {
  const std::size_t begin = find_last(text, "\n 1\\1\\");
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
    LevelEnergy level{std::string(field.substr(0, equals)), 0.0, ""};
    if (equals != npos && is_level_label(level.label) &&
        read_number(field.substr(equals + 1), level.hartree)) {
      archive.levels.push_back(level);
    }
  }
  return true;
}
