#include "log_summary.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>

#include "chem_formula.h"
#include "engine_format.h"
#include "output_text.h"

namespace {

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

const EngineFormat* const kFormats[] = {&kGaussianFormat, &kOrcaFormat, &kQchemFormat,
                                        &kNwchemFormat};

}  // namespace

const EngineFormat* const* engine_formats(std::size_t& count) {
  count = std::size(kFormats);
  return kFormats;
}

const EngineFormat* format_of(Engine engine) {
  for (const EngineFormat* f : kFormats) {
    if (f->engine == engine) return f;
  }
  return nullptr;
}

const char* engine_name(Engine engine) {
  const EngineFormat* f = format_of(engine);
  return f != nullptr ? f->name : "unknown";
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

bool read_charge_pair(const char* text, const char* format, int& charge, int& multiplicity) {
  long long c = 0, m = 0;
  if (std::sscanf(text, format, &c, &m) != 2) return false;
  charge = static_cast<int>(std::clamp<long long>(c, INT_MIN, INT_MAX));
  multiplicity = static_cast<int>(std::clamp<long long>(m, INT_MIN, INT_MAX));
  return true;
}

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

void note_level(std::vector<LevelEnergy>& levels, const std::string& label, double hartree,
                std::string_view line) {
  for (LevelEnergy& level : levels) {
    if (level.label == label) {
      level.hartree = hartree;
      level.line = std::string(trim(line));
      return;
    }
  }
  levels.push_back({label, hartree, std::string(trim(line))});
}

bool stated_number(std::string_view text, std::string_view label, double& value) {
  const std::size_t at = text.find(label);
  if (at == npos) return false;
  const std::string_view line = line_at(text, at);
  return number_after(line, line.find(label) + label.size(), value);
}

void choose_final_energy(const std::string& job_level, LogSummary& s) {
  s.final_energy = FinalEnergyLine{};
  const LevelEnergy* chosen = nullptr;
  for (const LevelEnergy& level : s.levels) {
    if (level.label == job_level) chosen = &level;
  }
  // The job's level unknown or not printed: the last level that is no scaled variant printed
  // beside its level and no excited state's total.
  for (std::size_t i = s.levels.size(); chosen == nullptr && i > 0; --i) {
    const std::string& label = s.levels[i - 1].label;
    if (!starts_with(label, "SCS-") && !starts_with(label, "SOS-") && label != "TDDFT") {
      chosen = &s.levels[i - 1];
    }
  }
  if (chosen != nullptr) s.final_energy = {true, chosen->line, chosen->hartree, chosen->label};
}

Termination last_ending(std::string_view tail, std::initializer_list<std::string_view> normal,
                        std::initializer_list<std::string_view> error) {
  const auto last = [tail](std::initializer_list<std::string_view> texts) {
    std::size_t at = npos;
    for (const std::string_view t : texts) {
      const std::size_t found = find_last(tail, t);
      if (found != npos && (at == npos || found > at)) at = found;
    }
    return at;
  };
  const std::size_t normal_at = last(normal), error_at = last(error);
  if (error_at != npos && (normal_at == npos || error_at > normal_at)) return Termination::error;
  return normal_at != npos ? Termination::normal : Termination::none;
}

bool is_level_label(std::string_view label) {
  if (label == "HF") return true;
  for (const char* p :
       {"MP", "CC", "QCI", "CI", "BD", "CBS", "G1", "G2", "G3", "G4", "W1", "ONIOM"}) {
    if (starts_with(label, p)) return true;
  }
  return false;
}

bool is_level_name(std::string_view word) {
  const std::string w = upper(word);
  if (w == "SCF" || w == "DFT") return true;
  for (const char* p : {"MBPT", "RI-", "SCS-", "SOS-", "DLPNO-", "LPNO-", "LCC"}) {
    if (starts_with(w, p)) return true;
  }
  return is_level_label(w);
}

bool energy_after_label(const std::vector<std::string_view>& w, std::size_t value,
                        double& hartree) {
  for (; value < w.size(); ++value) {
    if (read_number(w[value], hartree)) return true;
    if (w[value] != "=" && w[value] != ":" && w[value] != "..." && w[value] != "/" &&
        !is_word(w[value], "hartree")) {
      return false;
    }
  }
  return false;
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

std::string job_kind(const LogSummary& s) {
  std::string kinds;
  const auto add = [&kinds](bool is, const char* name) {
    if (is) kinds += (kinds.empty() ? "" : "+") + std::string(name);
  };
  add(s.scan, "Scan");
  add(s.optimisation && !s.scan, "Opt");
  add(s.frequency, "Freq");
  add(s.excited_states, "ES");
  add(s.dynamics, "MD");
  return kinds.empty() ? "SP" : kinds;
}

FinalEnergyLine read_final_energy(Engine engine, std::string_view text) {
  const EngineFormat* f = format_of(engine);
  return f != nullptr ? f->final_energy(text) : FinalEnergyLine{};
}

LogSummary summarize_log(std::string_view head, std::string_view tail, bool whole_text) {
  LogSummary s;
  const OutputText text{whole_text ? head : whole_lines(head), tail, whole_text};
  std::size_t count = 0;
  const EngineFormat* const* formats = engine_formats(count);
  const EngineFormat* format = nullptr;
  for (std::size_t i = 0; i < count && format == nullptr; ++i) {
    if (formats[i]->announces(text.head)) format = formats[i];
  }
  for (std::size_t i = 0; i < count && format == nullptr; ++i) {
    if (formats[i]->tail_sign != nullptr && contains(tail, formats[i]->tail_sign)) {
      format = formats[i];
    }
  }
  if (format != nullptr) {
    s.engine = format->engine;
    format->summarize(text, s);
  }
  if (s.engine != Engine::gaussian && s.engine != Engine::unknown) {
    if (s.job_type.empty()) s.job_type = job_kind(s);
    if (s.not_scf.empty()) s.not_scf = not_scf_kind(s.method, "");
    if (s.not_scf.empty() && s.excited_states) s.not_scf = "excited states";
  }
  // Numbers far outside chemistry are corrupt text, not a charge and multiplicity.
  if (s.charge < -1000 || s.charge > 1000 || s.multiplicity < 1 || s.multiplicity > 1000) {
    s.has_charge = false;
    s.charge = s.multiplicity = 0;
  }
  return s;
}
