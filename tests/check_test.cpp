// Tests of the check of a crystal's outputs that its recorded runs (tests/cli/check_*) cannot
// show cheaply: SCF counts of files too large to keep, the archive entry cut short, formulas
// and JSON texts at their limits, and (when they are beside the project) the real outputs.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "check_report.h"
#include "chem_formula.h"
#include "crystal_findings.h"
#include "log_summary.h"
#include "test_files.h"

namespace {

const std::string kArchive =
    " 1\\1\\GINC-N\\SP\\RCCSD(T)-FC\\cc-pVDZ\\C2H4(1-,2)\\U\\22-Nov-2026\\0\\\\#P CCSD(T)/cc\n"
    " -pVDZ\\\\t\\\\-1,2\\C,0.,0.,0.66\\C,0.,0.,-0.66\\H,0.,0.9,1.2\\H,0.,-0.9,1.2\\H,0.,0.\n"
    " 9,-1.2\\H,0.,-0.9,-1.2\\\\Version=X\\State=2-A\\HF=-78.05\\MP2=-78.3\\CCSD(T)=-78.\n"
    " 391\\RMSD=1.e-09\\PG=C01 [X(C2H4)]\\\\@\n";
const std::string kNormal = " Normal termination of Gaussian 16 at Sun Nov 22 2026.\n";

// A file is read whole up to head plus tail bytes; beyond, only its ends are seen.
TEST(ReadFileRow, CountsScfEnergiesOfFilesReadWhole) {
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U.\n";
  const std::string pad(kHeadBytes, ' ');
  const struct {
    std::string text;
    int count, seen;
  } cases[] = {
      {"x\n" + scf + scf, 2, 2},
      {"x\n" + scf + pad + scf + scf, 3, 3},  // head and tail overlap
      {"x\n" + scf + pad + std::string(kTailBytes, '\n') + scf + scf, -1,
       3},  // ends only: 1 + 2 seen
  };
  const std::string name = test_file_path(".log");
  for (const auto& c : cases) {
    std::ofstream(name, std::ios::binary) << c.text;
    FileRow row;
    row.file = name;
    read_file_row(row);
    EXPECT_EQ(row.energy, SpEnerStatus::found);
    EXPECT_EQ(row.summary.scf_count, c.count);
    EXPECT_EQ(row.summary.scf_seen, c.seen);
  }
  std::remove(name.c_str());
}

// Only a whole entry is read: one cut off before its closing "\\@" leaves the summary to the
// output's head, as no entry does. What a whole one gives, the recorded runs show.
TEST(GaussianArchive, OnlyAWholeEntryIsRead) {
  GaussianArchive a;
  EXPECT_TRUE(read_gaussian_archive("text\n" + kArchive + kNormal, a));
  EXPECT_FALSE(read_gaussian_archive("x\n" + kArchive.substr(0, kArchive.size() - 6), a));
  EXPECT_FALSE(read_gaussian_archive("x\n SCF Done\n", a));
}

TEST(ChemFormula, HillOrderAndElectrons) {
  EXPECT_EQ(hill_formula({"h", "C", "cl", "C"}), "C2HCl");  // counts of 1 unwritten, as archives do
  EXPECT_EQ(hill_formula({"O", "H", "H"}), "H2O");          // no carbon: alphabetical
  EXPECT_EQ(formula_electrons("C18H12"), 120);
  EXPECT_EQ(formula_electrons("C2Q4"), -1);
  EXPECT_EQ(formula_electrons("Rn999999Xe999999"), -1);  // corrupt
  EXPECT_EQ(formula_electrons("H1000001"), -1);          // more than a million of one atom
  std::string most;  // the most electrons a formula may count: a hundred million
  for (int k = 0; k < 100; ++k) most += "H1000000";
  EXPECT_EQ(formula_electrons(most), 100000000);
  EXPECT_EQ(formula_electrons(most + "H"), -1);
  EXPECT_EQ(formula_electrons(""), -1);
  EXPECT_EQ(atomic_number("Rn"), 86);
  EXPECT_EQ(atomic_number("Redundant"), 0);
}

TEST(CheckReport, JsonStringsAndNumbers) {
  EXPECT_EQ(json_string("a\"b\\c\n\t\x01\xc3\xa9"), "\"a\\\"b\\\\c\\n\\t\\u0001\xc3\xa9\"");
  EXPECT_EQ(json_string("\r\b\f\x1f "), "\"\\r\\b\\f\\u001f \"");
  EXPECT_EQ(shortest_number(-693.329689346), "-693.329689346");
  EXPECT_EQ(shortest_number(0.1), "0.1");
  EXPECT_EQ(std::strtod(shortest_number(1.0 / 3).c_str(), nullptr), 1.0 / 3);
}

// The real outputs beside the project, read as the program reads them, each in all three roles
// of a site: its engine, and its one finding besides those of a file read three times.
TEST(RealOutputs, AreClassified) {
  const std::string dir = QC_LOGS_DIR;
  if (!std::ifstream(dir + "/MANIFEST.tsv")) GTEST_SKIP() << "no engine outputs at " << dir;
  const struct {
    const char* file;
    Engine engine;
    const char* finding;
  } cases[] = {
      {"gaussian_g09-D.01_rb3lyp-sp.log", Engine::gaussian, ""},
      {"gaussian_g09-D.01_mp2-sp.log", Engine::gaussian, "not-scf-energy"},
      {"gaussian_g16-A.03_ccsdt-sp.log", Engine::gaussian, "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-td.log", Engine::gaussian, "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-freq.log", Engine::gaussian, "frequency-job"},
      {"gaussian_g16-A.03_b3lyp-scan.log", Engine::gaussian, "several-scf-energies"},
      {"gaussian_g16-A.03_rb3lyp-opt.log", Engine::gaussian, ""},
      {"gaussian_g16-A.03_ub3lyp-cation-sp.log", Engine::gaussian, ""},
      {"orca_5.0.0_rb3lyp-sp.log", Engine::orca, "no-energy-line"},
      {"qchem_5.4.1_b3lyp-sp.log", Engine::qchem, "no-energy-line"},
      {"nwchem_7.0.0_b3lyp-sp.log", Engine::nwchem, "no-energy-line"},
      {"nwchem_6.5_hf-sp.log", Engine::nwchem, "no-energy-line"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    FileRow row;
    row.file = dir + "/" + c.file;
    read_file_row(row);
    EXPECT_EQ(row.summary.engine, c.engine);
    EXPECT_EQ(row.summary.termination, Termination::normal);
    EXPECT_EQ(row.summary.final_energy.found, c.engine != Engine::gaussian);  // their own line
    CrystalInputs in;
    in.batch_opened = true;
    in.sites.push_back({1, "f f f", {0, 0, 0}});
    in.rows = {row};
    std::vector<std::string> found;
    for (const Finding& f : check_crystal(in)) {
      if (f.code != "same-file-two-roles" && f.code != "charge-mismatch") found.push_back(f.code);
    }
    EXPECT_EQ(found, std::vector<std::string>(*c.finding ? 1 : 0, c.finding));
  }
}

}  // namespace
