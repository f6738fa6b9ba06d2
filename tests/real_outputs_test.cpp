// The real engine outputs (when they are beside the project, in ../shared/qc-logs/), read as the
// energy job's reader reads them and classified as the check classifies them.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "crystal_findings.h"
#include "crystal_inputs.h"
#include "log_reader.h"
#include "test_files.h"

namespace {

// The real outputs, as their manifest describes them: read forward and backward (line count,
// energy), and checked in all three roles of a site (engine, termination, its one finding).
TEST(RealOutputs, AreReadAndClassified) {
  const std::string dir = QC_LOGS_DIR;
  const auto rows = manifest_rows(dir);
  if (rows.empty()) GTEST_SKIP() << "no engine outputs at " << dir;
  const std::map<std::string, std::string> findings = {
      // besides no-energy-line elsewhere
      {"gaussian_g09-D.01_mp2-sp.log", "not-scf-energy"},
      {"gaussian_g16-A.03_ccsdt-sp.log", "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-td.log", "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-freq.log", "frequency-job"},
      {"gaussian_g16-A.03_b3lyp-scan.log", "several-scf-energies"}};
  const std::map<std::string, std::pair<std::string, double>> finals = {
      {"orca_5.0.0_rb3lyp-sp.log", {"SCF", -382.055108614123}},
      {"qchem_5.4.1_b3lyp-sp.log", {"SCF", -382.3003975729}},
      {"nwchem_7.0.0_b3lyp-sp.log", {"DFT", -382.308242007863}},
      {"nwchem_6.5_hf-sp.log", {"SCF", -379.768962491035}}};
  const std::map<std::string, std::string> highest = {
      {"gaussian_g09-D.01_mp2-sp.log", "MP2"}, {"gaussian_g16-A.03_ccsdt-sp.log", "CCSD(T)"}};
  for (const std::vector<std::string>& cells : rows) {
    SCOPED_TRACE(cells.at(0));
    FileRow row;
    row.file = dir + "/" + cells.at(0);
    const LogScan forward = scan_path(row.file, true, 128 * 1024, 0);
    EXPECT_EQ(forward.entry_count, std::stoul(cells.at(5)));  // no long lines
    char energy[32] = "NONE";  // as the manifest gives it: %.15g, or NONE
    if (forward.marker_found) {
      std::snprintf(energy, sizeof energy, "%.15g",
                    sp_ener_from_line(forward.energy_entry).hartree);
    }
    EXPECT_EQ(energy, cells.at(9));
    EXPECT_EQ(scan_path(row.file, false, 128 * 1024, 0).energy_entry, forward.energy_entry);
    read_file_row(row);
    EXPECT_EQ(engine_name(row.summary.engine), cells.at(1));
    EXPECT_EQ(row.summary.termination, Termination::normal);
    CrystalInputs in;
    in.batch_opened = true;
    in.sites.push_back({1, "f f f", {0, 0, 0}});
    in.rows = {row};
    std::string found;
    for (const Finding& f : check_crystal(in)) {
      if (f.code != "same-file-two-roles" && f.code != "charge-mismatch") found += f.code;
    }
    EXPECT_EQ(found, cells.at(1) != "Gaussian"          ? "no-energy-line"
                     : findings.count(cells.at(0)) != 0 ? findings.at(cells.at(0))
                                                        : "");
    // Every "SCF Done" line counted, whatever the file's size; the final energy of the other
    // engines, of the level the output names; the highest level of the correlated Gaussian ones.
    if (cells.at(1) == "Gaussian") {
      EXPECT_EQ(row.summary.scf_count, std::stoi(cells.at(6)));
    }
    if (finals.count(cells.at(0)) != 0) {
      const FinalEnergyLine& f = row.summary.final_energy;
      EXPECT_EQ(f.level, finals.at(cells.at(0)).first);
      EXPECT_EQ(f.hartree, finals.at(cells.at(0)).second);
    }
    if (highest.count(cells.at(0)) != 0) {
      ASSERT_FALSE(row.summary.levels.empty());
      EXPECT_EQ(row.summary.levels.back().label, highest.at(cells.at(0)));
    }
  }
  EXPECT_EQ(rows.size(), 12u);
}

// The other engines' real outputs, each read as a whole crystal's file: what its manifest says
// the output states (charge, multiplicity, atoms, the job's level and its final energy), and
// the fields every output of those engines states (method, basis, a known job kind).
TEST(RealOutputs, OtherEnginesStateWhatTheirManifestSays) {
  const std::string dir = std::string(QC_LOGS_DIR) + "/other-engines";
  const auto rows = manifest_rows(dir);
  if (rows.empty()) GTEST_SKIP() << "no engine outputs at " << dir;
  for (const std::vector<std::string>& cells : rows) {
    SCOPED_TRACE(cells.at(0));
    FileRow row;
    row.file = dir + "/" + cells.at(0);
    read_file_row(row);
    const LogSummary& s = row.summary;
    EXPECT_EQ(engine_name(s.engine), cells.at(1));
    EXPECT_EQ(s.termination, Termination::normal);
    EXPECT_TRUE(s.has_charge);
    EXPECT_EQ(s.charge, std::stoi(cells.at(5)));
    EXPECT_EQ(s.multiplicity, std::stoi(cells.at(6)));
    EXPECT_EQ(s.atom_count, std::stoi(cells.at(7)));
    EXPECT_NE(s.formula, "");
    EXPECT_NE(s.method, "");
    EXPECT_NE(s.basis, "");
    EXPECT_EQ(s.final_energy.level == "DFT" ? "SCF" : s.final_energy.level,
              cells.at(8) == "DFT" ? "SCF" : cells.at(8));
    EXPECT_EQ(s.final_energy.hartree, std::stod(cells.at(9)));
    EXPECT_EQ(s.optimisation, cells.at(3).find("optimisation") != std::string::npos);
    EXPECT_EQ(s.converged, s.optimisation);
    EXPECT_EQ(s.frequency, cells.at(3).find("frequencies") != std::string::npos);
    EXPECT_EQ(s.has_s2, s.multiplicity > 1);
  }
  EXPECT_EQ(rows.size(), 11u);
}

// A site of real outputs of one engine whose anion column holds a copy of the neutral run: the
// check finds the charge that does not fit, whatever the engine.
TEST(RealOutputs, AnionColumnHoldingTheNeutralIsFound) {
  const std::string dir = QC_LOGS_DIR;
  if (manifest_rows(dir).empty()) GTEST_SKIP() << "no engine outputs at " << dir;
  const char* sites[][2] = {
      {"orca_5.0.0_rb3lyp-sp.log", "other-engines/orca_5.0.0_ub3lyp-cation-sp.log"},
      {"qchem_5.4.1_b3lyp-sp.log", "other-engines/qchem_5.1_ub3lyp-cation-sp.log"},
      {"nwchem_7.0.0_b3lyp-sp.log", "other-engines/nwchem_6.5_ub3lyp-cation-sp.log"},
      {"gaussian_g09-D.01_rb3lyp-sp.log", "gaussian_g16-A.03_ub3lyp-cation-sp.log"}};
  for (const auto& [neutral, cation] : sites) {
    SCOPED_TRACE(neutral);
    CrystalInputs in;
    in.batch_opened = true;
    in.sites.push_back({1, "n c n", {0, 1, 0}});
    for (const char* name : {neutral, cation}) {
      FileRow& row = in.rows.emplace_back();
      row.file = dir + "/" + name;
      read_file_row(row);
    }
    std::string codes;
    for (const Finding& f : check_crystal(in)) {
      if (f.severity == Severity::wrong_number) codes += f.code + " ";
    }
    EXPECT_EQ(codes, "charge-mismatch ");
  }
}

}  // namespace
