#include "crystal_result.h"

#include <cmath>
#include <set>

#include "check_report.h"
#include "text_format.h"

namespace {

// Findings about the "SCF Done" line that get_inter_ener takes: they do not apply to a file
// whose energy comes from its engine's own final-energy line.
const std::set<std::string> kScfDoneFindings = {"no-energy-line", "energy-line-too-short",
                                                "energy-not-a-number", "energy-not-finite"};

// Levels whose total is the SCF (or DFT) energy.
const std::set<std::string> kScfLevels = {"SCF", "DFT", "HF"};

// The engine a file is read as: its own, or the one asked for when its text names none.
Engine reading_engine(const FileRow& row, const ReadingChoice& choice) {
  const Engine own = row.summary.engine;
  return own == Engine::unknown && choice.engine == Engine::gaussian ? Engine::gaussian : own;
}

bool applies(const Finding& f, const CrystalInputs& in, const ReadingChoice& choice) {
  if (f.code == "not-scf-energy") return choice.level == EnergyLevel::scf;
  if (kScfDoneFindings.count(f.code) == 0) return true;
  for (const FileRow& row : in.rows) {
    const Engine engine = reading_engine(row, choice);
    if (row.file == f.file && engine != Engine::gaussian && engine != Engine::unknown) {
      return false;
    }
  }
  return true;
}

// The energy of `row` as `choice` asks, into `out`; false with the reason in `why` when it has
// none that can be taken without a guess.
bool file_energy(const FileRow& row, const ReadingChoice& choice, FileEnergy& out,
                 std::string& why) {
  const LogSummary& s = row.summary;
  out = {row.site, row.role, row.file, reading_engine(row, choice), "", 0.0};
  if (row.read != LogReadStatus::ok) {
    why = "it cannot be read";
    return false;
  }
  if (out.engine == Engine::unknown) {
    why = "no engine is recognised in its text (--engine gaussian reads its \"SCF Done\" line)";
    return false;
  }
  if (choice.engine != Engine::unknown && out.engine != choice.engine) {
    why = std::string("it is an output of ") + engine_name(out.engine) + ", not of " +
          engine_name(choice.engine);
    return false;
  }
  if (out.engine == Engine::gaussian) {
    if (choice.level == EnergyLevel::final && !s.levels.empty()) {
      out.level = s.levels.back().label;
      out.hartree = s.levels.back().hartree;
    } else if (row.energy == SpEnerStatus::found) {
      out.level = "SCF";
      out.hartree = row.hartree;
    } else {
      why = "it holds no \"SCF Done\" line";
      return false;
    }
  } else {
    const FinalEnergyLine& f = s.final_energy;
    if (!f.found) {
      why = std::string("it holds no final-energy line of ") + engine_name(out.engine);
      return false;
    }
    out.level = f.level;
    out.hartree = f.hartree;
    if (choice.level == EnergyLevel::scf && kScfLevels.count(f.level) == 0) {
      // The SCF total of a correlated job, printed before the job's own level.
      const LevelEnergy* scf = nullptr;
      for (const LevelEnergy& level : s.levels) {
        if (kScfLevels.count(level.label) != 0) scf = &level;
      }
      if (scf == nullptr) {
        why = "its final energy is the " + f.level +
              " total and no SCF energy is read from it (--level final takes the " + f.level +
              " one)";
        return false;
      }
      out.level = scf->label;
      out.hartree = scf->hartree;
    }
  }
  if (!std::isfinite(out.hartree)) {
    why = "its energy is not a finite number";
    return false;
  }
  return true;
}

std::string json_number(double value) { return shortest_number(value); }

std::string disorder_json(const Disorder& d) {
  return format_text(
      "{\"sigma_site_meV\": %s, \"sigma_delta_meV\": %s, \"sigma_delta_over_sqrt2_meV\": %s, "
      "\"correlation_ratio\": %s, \"sites\": %d, \"pairs\": %ld}",
      json_number(d.sigma_site).c_str(), json_number(d.sigma_delta).c_str(),
      json_number(d.sigma_delta / std::sqrt(2.0)).c_str(),
      d.has_ratio ? json_number(d.ratio).c_str() : "null", d.sites, d.pairs);
}

}  // namespace

Disorder disorder_of(const std::vector<double>& site_energy,
                     const std::vector<std::vector<int>>& neighbors) {
  Disorder d;
  d.sites = static_cast<int>(site_energy.size());
  if (site_energy.empty()) return d;
  double mean = 0.0;
  for (const double e : site_energy) mean += e;
  mean /= static_cast<double>(site_energy.size());
  double spread = 0.0;
  for (const double e : site_energy) spread += (e - mean) * (e - mean);
  d.sigma_site = std::sqrt(spread / static_cast<double>(site_energy.size()));
  double squares = 0.0;
  for (std::size_t i = 0; i < neighbors.size() && i < site_energy.size(); ++i) {
    for (const int k : neighbors[i]) {
      const double delta = site_energy[static_cast<std::size_t>(k)] - site_energy[i];
      squares += delta * delta;
      ++d.pairs;
    }
  }
  if (d.pairs > 0) d.sigma_delta = std::sqrt(squares / static_cast<double>(d.pairs));
  d.has_ratio = d.sigma_site > 0.0;
  if (d.has_ratio) d.ratio = d.sigma_delta * d.sigma_delta / (2.0 * d.sigma_site * d.sigma_site);
  return d;
}

CrystalResult evaluate_crystal(const std::string& crystal, const CrystalInputs& in,
                               const std::vector<Finding>& found, const ReadingChoice& choice) {
  CrystalResult r;
  r.crystal = crystal;
  r.batch = in.batch_name;
  r.level = choice.level;
  for (const Finding& f : found) {
    if (applies(f, in, choice)) r.findings.push_back(f);
  }
  // The findings come most severe first: the first one that refuses the crystal says why.
  for (const Finding& f : r.findings) {
    if (f.severity == Severity::stop || (f.severity == Severity::wrong_number && !choice.force)) {
      r.refused = f.code + finding_place(f) + ": " + f.message;
      if (f.severity == Severity::wrong_number) r.refused += " (--force writes it)";
      return r;
    }
  }
  for (const FileRow& row : in.rows) {
    FileEnergy energy;
    std::string why;
    if (!file_energy(row, choice, energy, why)) {
      r.refused = row.file + ": " + why;
      return r;
    }
    r.files.push_back(energy);
  }
  const std::size_t n = in.sites.size();
  r.energies = {std::vector<double>(n), std::vector<double>(n), std::vector<double>(n)};
  std::vector<double> hole(n), electron(n);
  for (std::size_t j = 0; j < n; ++j) {
    const int* rows = in.sites[j].rows;
    r.energies.U_cC_e[j] = r.files[static_cast<std::size_t>(rows[0])].hartree * hartree_to_meV;
    r.energies.U_cC_h[j] = r.files[static_cast<std::size_t>(rows[1])].hartree * hartree_to_meV;
    r.energies.U_nM[j] = r.files[static_cast<std::size_t>(rows[2])].hartree * hartree_to_meV;
    hole[j] = r.energies.U_cC_h[j] - r.energies.U_nM[j];
    electron[j] = r.energies.U_cC_e[j] - r.energies.U_nM[j];
  }
  r.neighbors = in.neighbors.neighbor_mol_id;
  r.hole = disorder_of(hole, r.neighbors);
  r.electron = disorder_of(electron, r.neighbors);
  return r;
}

std::string result_json(const CrystalResult& r) {
  std::string j = "{\"crystal\": " + json_string(r.crystal) +
                  ", \"batch\": " + json_string(r.batch) + ", \"level\": \"" +
                  (r.level == EnergyLevel::scf ? "scf" : "final") +
                  "\", \"written\": " + (r.refused.empty() ? "true" : "false") +
                  ", \"refused\": " + (r.refused.empty() ? "null" : json_string(r.refused));
  j += ", \"files\": [";
  for (std::size_t i = 0; i < r.files.size(); ++i) {
    const FileEnergy& f = r.files[i];
    j += format_text(
        "%s{\"file\": %s, \"site\": %d, \"role\": \"%s\", \"engine\": \"%s\", "
        "\"level\": %s, \"hartree\": %s}",
        i == 0 ? "" : ", ", json_string(f.file).c_str(), f.site, kRoles[f.role],
        engine_name(f.engine), json_string(f.level).c_str(), json_number(f.hartree).c_str());
  }
  j += "], \"sites\": [";
  const SiteEnergies& e = r.energies;
  const std::size_t n = r.refused.empty() ? e.U_nM.size() : 0;
  double hole_mean = 0.0, electron_mean = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    hole_mean += (e.U_cC_h[i] - e.U_nM[i]) / static_cast<double>(n);
    electron_mean += (e.U_cC_e[i] - e.U_nM[i]) / static_cast<double>(n);
  }
  for (std::size_t i = 0; i < n; ++i) {
    const double hole = e.U_cC_h[i] - e.U_nM[i], electron = e.U_cC_e[i] - e.U_nM[i];
    j += format_text(
        "%s{\"site\": %zu, \"anion_meV\": %s, \"cation_meV\": %s, \"neutral_meV\": %s, "
        "\"hole_meV\": %s, \"electron_meV\": %s, \"hole_relative_meV\": %s, "
        "\"electron_relative_meV\": %s}",
        i == 0 ? "" : ", ", i + 1, json_number(e.U_cC_e[i]).c_str(),
        json_number(e.U_cC_h[i]).c_str(), json_number(e.U_nM[i]).c_str(), json_number(hole).c_str(),
        json_number(electron).c_str(), json_number(hole - hole_mean).c_str(),
        json_number(electron - electron_mean).c_str());
  }
  j += "], \"pairs\": [";
  bool first = true;
  for (std::size_t i = 0; i < n && i < r.neighbors.size(); ++i) {
    for (const int k : r.neighbors[i]) {
      const auto kk = static_cast<std::size_t>(k);
      const double hole = (e.U_cC_h[kk] - e.U_nM[kk]) - (e.U_cC_h[i] - e.U_nM[i]);
      const double electron = (e.U_cC_e[kk] - e.U_nM[kk]) - (e.U_cC_e[i] - e.U_nM[i]);
      j += format_text(
          "%s{\"site\": %zu, \"neighbor\": %d, \"hole_meV\": %s, "
          "\"electron_meV\": %s}",
          first ? "" : ", ", i + 1, k + 1, json_number(hole).c_str(),
          json_number(electron).c_str());
      first = false;
    }
  }
  j += "], \"disorder\": ";
  j += n == 0 ? std::string("null")
              : "{\"hole\": " + disorder_json(r.hole) +
                    ", \"electron\": " + disorder_json(r.electron) + "}";
  j += ", \"findings\": [";
  for (std::size_t i = 0; i < r.findings.size(); ++i) {
    j += (i == 0 ? "" : ", ") + finding_json(r.findings[i]);
  }
  return j + "]}";
}
