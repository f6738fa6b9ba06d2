// What the checker's recorded runs (tests/cli/check_*) cannot show cheaply: SCF counts of files
// too large to keep, a cut-off archive entry, formulas and JSON texts at their limits, and the
// real engine outputs (when they are beside the project), read as the reader reads them too.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "check_report.h"
#include "chem_formula.h"
#include "command_line.h"
#include "crystal_findings.h"
#include "log_summary.h"
#include "test_files.h"
#include "text_format.h"

namespace {

const std::string kArchive =
    " 1\\1\\GINC-N\\SP\\RCCSD(T)-FC\\cc-pVDZ\\C2H4(1-,2)\\U\\22-Nov-2026\\0\\\\#P CCSD(T)/cc\n"
    " -pVDZ\\\\t\\\\-1,2\\C,0.,0.,0.66\\C,0.,0.,-0.66\\H,0.,0.9,1.2\\H,0.,-0.9,1.2\\H,0.,0.\n"
    " 9,-1.2\\H,0.,-0.9,-1.2\\\\Version=X\\State=2-A\\HF=-78.05\\MP2=-78.3\\CCSD(T)=-78.\n"
    " 391\\RMSD=1.e-09\\PG=C01 [X(C2H4)]\\\\@\n";

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
      {"x\n" + scf + pad + std::string(kTailBytes, '\n') + scf + scf, -1, 3},  // ends only
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

// Only a whole archive entry is read: one cut off before its closing "\\@" leaves the summary
// to the output's head, as no entry does (what a whole one gives, the recorded runs show).
// Method names lose their R or U prefix only when a name follows.
TEST(LogSummary, WholeArchiveEntriesAndMethodNames) {
  GaussianArchive a;
  EXPECT_TRUE(read_gaussian_archive("text\n" + kArchive + " Normal termination\n", a));
  EXPECT_FALSE(read_gaussian_archive("x\n" + kArchive.substr(0, kArchive.size() - 6), a));
  EXPECT_FALSE(read_gaussian_archive("x\n SCF Done\n", a));
  EXPECT_EQ(method_key("U"), "U");  // R and U are prefixes only when a name follows
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

// The -json option, the checker's only (the energy job takes it for an unknown word), and the
// JSON document's strings and numbers.
TEST(CheckReport, JsonOptionStringsAndNumbers) {
  EXPECT_EQ(match_option("-json", true), Option::json);
  EXPECT_EQ(match_option("-json", false), Option::none);
  EXPECT_EQ(json_string("a\"b\\c\n\t\x01\xc3\xa9"), "\"a\\\"b\\\\c\\n\\t\\u0001\xc3\xa9\"");
  EXPECT_EQ(json_string("\r\b\f\x1f "), "\"\\r\\b\\f\\u001f \"");
  EXPECT_EQ(shortest_number(-693.329689346), "-693.329689346");
  EXPECT_EQ(shortest_number(0.1), "0.1");
  EXPECT_EQ(std::strtod(shortest_number(1.0 / 3).c_str(), nullptr), 1.0 / 3);
  EXPECT_EQ(format_text("%s", ""), "");  // an empty message, no stray NUL
}

// The real outputs, as their manifest describes them: read forward and backward (line count,
// energy), and checked in all three roles of a site (engine, termination, its one finding).
TEST(RealOutputs, AreReadAndClassified) {
  const std::string dir = QC_LOGS_DIR;
  std::ifstream manifest(dir + "/MANIFEST.tsv");
  if (!manifest) GTEST_SKIP() << "no engine outputs at " << dir;
  const std::map<std::string, std::string> findings = {
      // besides no-energy-line elsewhere
      {"gaussian_g09-D.01_mp2-sp.log", "not-scf-energy"},
      {"gaussian_g16-A.03_ccsdt-sp.log", "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-td.log", "not-scf-energy"},
      {"gaussian_g16-A.03_b3lyp-freq.log", "frequency-job"},
      {"gaussian_g16-A.03_b3lyp-scan.log", "several-scf-energies"}};
  std::string line;
  std::getline(manifest, line);  // column names
  int checked = 0;
  for (; std::getline(manifest, line); ++checked) {
    std::vector<std::string> cells;
    std::istringstream fields(line);
    for (std::string cell; std::getline(fields, cell, '\t');) cells.push_back(cell);
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
  }
  EXPECT_EQ(checked, 12);
}

}  // namespace
