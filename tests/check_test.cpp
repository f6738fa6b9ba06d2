// Tests of the check of a crystal's outputs: recognition of an output from its ends, the
// archive entry, formulas, the findings over hand-built rows, the JSON text, and (when they are
// beside the project) the real engine outputs.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "check_report.h"
#include "chem_formula.h"
#include "crystal_findings.h"
#include "log_summary.h"

namespace {

// A Gaussian-style output: head with route and charge line, `body`, then `ending`.
std::string gaussian_text(const std::string& route, const std::string& charge_line,
                          const std::string& body, const std::string& ending) {
  return " Entering Gaussian System, Link 0=g16\n ----------\n " + route + "\n ----------\n" +
         " Symbolic Z-matrix:\n " + charge_line + "\n C 0.0 0.0 0.66\n C 0.0 0.0 -0.66\n" +
         " H 0.0 0.9 1.2\n H 0.0 -0.9 1.2\n H 0.0 0.9 -1.2\n H 0.0 -0.9 -1.2\n\n" + body + ending;
}

const std::string kArchive =
    " 1\\1\\GINC-N\\SP\\RCCSD(T)-FC\\cc-pVDZ\\C2H4(1-,2)\\U\\22-Nov-2026\\0\\\\#P CCSD(T)/cc\n"
    " -pVDZ\\\\t\\\\-1,2\\C,0.,0.,0.66\\C,0.,0.,-0.66\\H,0.,0.9,1.2\\H,0.,-0.9,1.2\\H,0.,0.\n"
    " 9,-1.2\\H,0.,-0.9,-1.2\\\\Version=X\\State=2-A\\HF=-78.05\\MP2=-78.3\\CCSD(T)=-78.\n"
    " 391\\RMSD=1.e-09\\PG=C01 [X(C2H4)]\\\\@\n";
const std::string kTdTotal = " Total Energy, E(TD-HF/TD-DFT) =  -78.312205281\n";
const std::string kNormal = " Normal termination of Gaussian 16 at Sun Nov 22 2026.\n";

TEST(LogSummary, RecognisesOutputsFromTheirEnds) {
  struct Case {
    const char* name;
    std::string text;
    Engine engine;
    Termination termination;
    int charge, multiplicity, atoms;
    const char* formula;
    const char* method;
    const char* basis;
    const char* not_scf;
    bool optimisation, converged, frequency;
  };
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U. after   9 cycles\n";
  const Case cases[] = {
      {"single point from the archive",
       gaussian_text("#p CCSD(T)/cc-pVDZ", "Charge = 0 Multiplicity = 1", scf, kArchive + kNormal),
       Engine::gaussian, Termination::normal, -1, 2, 6, "C2H4", "RCCSD(T)-FC", "cc-pVDZ",
       "coupled cluster", false, false, false},
      {"cut-off optimisation from the head",
       gaussian_text("#p opt b3lyp/6-31g(d)", "Charge = 1 Multiplicity = 2", scf + scf, ""),
       Engine::gaussian, Termination::none, 1, 2, 6, "C2H4", "B3LYP", "6-31G(D)", "", true, false,
       false},
      {"error termination of a TD job",
       gaussian_text("#p b3lyp/sto-3g td(nstates=5)", "Charge = 0 Multiplicity = 1", scf + kTdTotal,
                     " Error termination via Lnk1e\n"),
       Engine::gaussian, Termination::error, 0, 1, 6, "C2H4", "B3LYP", "STO-3G", "TD", false, false,
       false},
      {"converged optimisation and frequencies",
       gaussian_text("#p opt freq b3lyp/sto-3g", "Charge = 0 Multiplicity = 1",
                     scf + "    -- Stationary point found.\n", kNormal),
       Engine::gaussian, Termination::normal, 0, 1, 6, "C2H4", "B3LYP", "STO-3G", "", true, true,
       true},
      {"corrupt charge line",
       gaussian_text("#p b3lyp/sto-3g", "Charge = 99999999 Multiplicity = 1", scf, kNormal),
       Engine::gaussian, Termination::normal, 0, 0, 6, "C2H4", "B3LYP", "STO-3G", "", false, false,
       false},
      {"ORCA",
       "* O   R   C   A *\nFINAL SINGLE POINT ENERGY  -1.5\n****ORCA TERMINATED NORMALLY****\n",
       Engine::orca, Termination::normal, 0, 0, 0, "", "", "", "", false, false, false},
      {"Q-Chem with an error", "Welcome to Q-Chem\n Q-Chem fatal error occurred in module x\n",
       Engine::qchem, Termination::error, 0, 0, 0, "", "", "", "", false, false, false},
      {"NWChem cut off",
       " Northwest Computational Chemistry Package (NWChem) 7.0\n Total DFT energy = -2.5\n",
       Engine::nwchem, Termination::none, 0, 0, 0, "", "", "", "", false, false, false},
      {"unknown", " Demo run\n SCF Done:  E(RB3LYP) =  -1.0  A.U.\n", Engine::unknown,
       Termination::none, 0, 0, 0, "", "", "", "", false, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const LogSummary s = summarize_log(c.text, c.text, true);
    EXPECT_EQ(s.engine, c.engine);
    EXPECT_EQ(s.termination, c.termination);
    EXPECT_EQ(s.has_charge, c.multiplicity != 0);
    EXPECT_EQ(s.charge, c.charge);
    EXPECT_EQ(s.multiplicity, c.multiplicity);
    EXPECT_EQ(s.atom_count, c.atoms);
    EXPECT_EQ(s.formula, c.formula);
    EXPECT_EQ(s.method, c.method);
    EXPECT_EQ(s.basis, c.basis);
    EXPECT_EQ(s.not_scf, c.not_scf);
    EXPECT_EQ(s.optimisation, c.optimisation);
    EXPECT_EQ(s.converged, c.converged);
    EXPECT_EQ(s.frequency, c.frequency);
    EXPECT_EQ(!s.levels.empty() && s.levels.back().hartree == -78.312205281,
              c.text.find(kTdTotal) != std::string::npos);
  }
}

TEST(LogSummary, CountsScfEnergiesOnlyOfAWholeText) {
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U.\n";
  const std::string text =
      gaussian_text("#p b3lyp/sto-3g", "Charge = 0 Multiplicity = 1", scf + scf + scf, kNormal);
  EXPECT_EQ(summarize_log(text, text, true).scf_count, 3);
  const LogSummary ends = summarize_log(text.substr(0, 10), text.substr(text.size() - 100), false);
  EXPECT_EQ(ends.scf_count, -1);
  EXPECT_EQ(ends.scf_seen, 1);
}

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
  const std::string name =
      testing::TempDir() + "check_test_row." + std::to_string(getpid()) + ".log";
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

TEST(LogSummary, RunsOfSeveralPointsFromTheRoute) {
  const struct {
    const char* route;
    bool scan, dynamics;
  } cases[] = {{"#p admp b3lyp/sto-3g", false, true},
               {"#P BOMD(MaxPoints=50) B3LYP/STO-3G", false, true},
               {"#p b3lyp/sto-3g scan", true, false},
               {"#p b3lyp/sto-3g scf=tight", false, false}};
  for (const auto& c : cases) {
    const std::string text = gaussian_text(c.route, "Charge = 0 Multiplicity = 1", "", kNormal);
    const LogSummary s = summarize_log(text, text, true);
    EXPECT_EQ(s.scan, c.scan) << c.route;
    EXPECT_EQ(s.dynamics, c.dynamics) << c.route;
  }
}

TEST(LogSummary, OtherEnginesFinalEnergyLines) {
  const struct {
    std::string text;
    const char* line;
    double hartree;
  } cases[] = {
      {"* O   R   C   A *\nFINAL SINGLE POINT ENERGY       -382.055108614123\n",
       "FINAL SINGLE POINT ENERGY       -382.055108614123", -382.055108614123},
      {"Welcome to Q-Chem\n Total energy in the final basis set =     -382.3003975729\r\n",
       "Total energy in the final basis set =     -382.3003975729", -382.3003975729},
      {" Northwest Computational Chemistry Package\n Total SCF energy = -1.5\n"
       "   Total DFT energy =   -379.768962491035\n",
       "Total DFT energy =   -379.768962491035", -379.768962491035},
  };
  for (const auto& c : cases) {
    const LogSummary s = summarize_log(c.text, c.text, true);
    EXPECT_TRUE(s.final_energy.found) << c.line;
    EXPECT_EQ(s.final_energy.line, c.line);
    EXPECT_DOUBLE_EQ(s.final_energy.hartree, c.hartree);
  }
}

TEST(GaussianArchive, UnwrapsTheEntryAndItsLevels) {
  GaussianArchive a;
  ASSERT_TRUE(read_gaussian_archive("text\n" + kArchive + kNormal, a));
  EXPECT_EQ(a.job_type, "SP");
  EXPECT_EQ(a.route, "#P CCSD(T)/cc-pVDZ");
  EXPECT_EQ(a.atom_count, 6);
  ASSERT_EQ(a.levels.size(), 3u);  // HF, MP2, CCSD(T); RMSD is no level
  EXPECT_EQ(a.levels[2].label, "CCSD(T)");
  EXPECT_DOUBLE_EQ(a.levels[2].hartree, -78.391);
  // Cut off before "\\@", or no entry at all.
  EXPECT_FALSE(read_gaussian_archive("x\n" + kArchive.substr(0, kArchive.size() - 6), a));
  EXPECT_FALSE(read_gaussian_archive("x\n SCF Done\n", a));
}

TEST(LogSummary, MethodKeysAndKinds) {
  const struct {
    const char* method;
    const char* route;
    const char* key;
    const char* kind;
  } cases[] = {
      {"UB3LYP", "", "B3LYP", ""},
      {"ROHF", "", "HF", ""},
      {"RMP2-FC", "", "MP2", "MPn"},
      {"RB3LYP TD-FC", "", "B3LYP TD", "TD"},
      {"", "#p eom-ccsd/cc-pvdz", "", "EOM"},
      {"", "#p cis(nstates=3)/6-31g", "", "CI"},
      {"", "#p b3lyp/6-31g counterpoise=2", "", "counterpoise"},
      {"", "#p cbs-qb3", "", "composite"},
      {"", "#p oniom(b3lyp/6-31g:uff)", "", "ONIOM"},
      {"B2PLYP", "", "B2PLYP", "double hybrid"},
      {"RB3LYP", "#p b3lyp/6-31g opt freq", "B3LYP", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(method_key(c.method), c.key) << c.method;
    EXPECT_EQ(not_scf_kind(c.method, c.route), c.kind) << c.method << c.route;
  }
}

TEST(ChemFormula, HillOrderAndElectrons) {
  EXPECT_EQ(hill_formula({"O", "H", "H"}), "H2O");  // as an archive entry writes it
  EXPECT_EQ(hill_formula({"h", "C", "cl", "C"}), "C2HCl");
  EXPECT_EQ(hill_formula({"O", "C", "H", "H"}), "CH2O");
  EXPECT_EQ(hill_formula({}), "");
  EXPECT_EQ(formula_electrons("C18H12"), 120);
  EXPECT_EQ(formula_electrons("H2O"), 10);
  EXPECT_EQ(formula_electrons("C2Q4"), -1);
  EXPECT_EQ(formula_electrons("Rn999999Xe999999"), -1);  // corrupt
  EXPECT_EQ(formula_electrons(""), -1);
  EXPECT_EQ(atomic_number("Rn"), 86);
  EXPECT_EQ(atomic_number("Redundant"), 0);
}

TEST(CheckReport, JsonStringsAndNumbers) {
  EXPECT_EQ(json_string("a\"b\\c\n\t\x01\xc3\xa9"), "\"a\\\"b\\\\c\\n\\t\\u0001\xc3\xa9\"");
  EXPECT_EQ(shortest_number(-693.329689346), "-693.329689346");
  EXPECT_EQ(shortest_number(0.1), "0.1");
  EXPECT_EQ(std::strtod(shortest_number(1.0 / 3).c_str(), nullptr), 1.0 / 3);
}

// A readable Gaussian row with an energy.
FileRow gaussian_row(int site, int role, const std::string& file, int charge, int multiplicity) {
  FileRow row;
  row.site = site;
  row.role = role;
  row.file = file;
  row.summary.engine = Engine::gaussian;
  row.summary.termination = Termination::normal;
  row.summary.has_charge = true;
  row.summary.charge = charge;
  row.summary.multiplicity = multiplicity;
  row.summary.atom_count = 6;
  row.summary.formula = "C2H4";
  row.summary.method = multiplicity == 1 ? "RB3LYP" : "UB3LYP";
  row.summary.basis = "6-31G(d)";
  row.summary.scf_count = 1;
  row.energy = SpEnerStatus::found;
  row.hartree = -78.5;
  return row;
}

// One clean site, its rows 0..2; neighbour table of one site.
CrystalInputs clean_site() {
  CrystalInputs in;
  in.batch_name = "jobs.dat";
  in.batch_opened = true;
  in.batch.job_count = 1;
  in.sites.push_back({1, "a c n", {0, 1, 2}});
  in.rows = {gaussian_row(1, 0, "a", -1, 2), gaussian_row(1, 1, "c", 1, 2),
             gaussian_row(1, 2, "n", 0, 1)};
  in.neighbors_read = in.neighbors_opened = true;
  in.neighbors.neighbor_mol_id = {{}};
  return in;
}

std::vector<std::string> codes(const std::vector<Finding>& findings) {
  std::vector<std::string> list;
  for (const Finding& f : findings) list.push_back(f.code);
  return list;
}

TEST(CrystalFindings, EachFaultGivesItsCodeAndStatus) {
  const struct {
    const char* name;
    void (*spoil)(CrystalInputs&);
    std::vector<std::string> codes;
    int status;
  } cases[] = {
      {"clean", [](CrystalInputs&) {}, {}, 0},
      {"missing",
       [](CrystalInputs& in) { in.rows[1].read = LogReadStatus::cannot_open; },
       {"missing-file"},
       2},
      {"ORCA",
       [](CrystalInputs& in) {
         in.rows[0].summary = LogSummary{};
         in.rows[0].summary.engine = Engine::orca;
         in.rows[0].summary.termination = Termination::normal;
         in.rows[0].energy = SpEnerStatus::marker_not_found;
       },
       {"no-energy-line"},
       2},
      {"short line",
       [](CrystalInputs& in) { in.rows[2].energy = SpEnerStatus::too_few_fields; },
       {"energy-line-too-short"},
       2},
      {"neighbours refused",
       [](CrystalInputs& in) { in.neighbor_status = ListStatus::neighbor_out_of_range; },
       {"neighbor-table-refused"},
       2},
      {"cut off",
       [](CrystalInputs& in) { in.rows[2].summary.termination = Termination::none; },
       {"not-normal-termination"},
       1},
      {"swapped",
       [](CrystalInputs& in) { std::swap(in.rows[0].summary, in.rows[1].summary); },
       {"anion-cation-swapped"},
       1},
      {"cation charge",
       [](CrystalInputs& in) {
         in.rows[1].summary.charge = 2;
         in.rows[1].summary.multiplicity = 1;
       },
       {"charge-mismatch"},
       1},
      {"parity",
       [](CrystalInputs& in) { in.rows[0].summary.multiplicity = 1; },
       {"multiplicity-parity"},
       1},
      {"other molecule",
       [](CrystalInputs& in) { in.rows[0].summary.formula = "H4N2"; },
       {"formula-mismatch"},
       1},
      {"functional and basis",
       [](CrystalInputs& in) {
         in.rows[2].summary.method = "RPBE0";
         in.rows[0].summary.basis = "6-311G";
       },
       {"basis-mismatch", "method-mismatch"},
       1},
      {"scan",
       [](CrystalInputs& in) { in.rows[0].summary.scan = true; },
       {"several-scf-energies"},
       1},
      {"converged optimisation",
       [](CrystalInputs& in) {
         in.rows[2].summary.optimisation = in.rows[2].summary.converged = true;
         in.rows[2].summary.scf_count = 5;
       },
       {},
       0},
      {"two roles",
       [](CrystalInputs& in) { in.sites[0].rows[2] = 0; },
       {"charge-mismatch", "charge-mismatch", "same-file-two-roles"},
       1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CrystalInputs in = clean_site();
    c.spoil(in);
    const std::vector<Finding> findings = check_crystal(in);
    EXPECT_EQ(codes(findings), c.codes);
    EXPECT_EQ(check_status(findings), c.status);
  }
}

// The real outputs beside the project, read as the program reads them.
TEST(RealOutputs, AreClassified) {
  const std::string dir = QC_LOGS_DIR;
  if (!std::ifstream(dir + "/MANIFEST.tsv")) GTEST_SKIP() << "no engine outputs at " << dir;
  const struct {
    const char* file;
    Engine engine;
    const char* not_scf;
    const char* finding;        // the one finding of the file read in all three roles besides those
    const char* level;          // the highest level whose energy it prints, besides HF
    double final_energy = 0.0;  // the other engines' own final energy
  } cases[] = {
      {"gaussian_g09-D.01_rb3lyp-sp.log", Engine::gaussian, "", "", ""},
      {"gaussian_g09-D.01_mp2-sp.log", Engine::gaussian, "MPn", "not-scf-energy", "MP2"},
      {"gaussian_g16-A.03_ccsdt-sp.log", Engine::gaussian, "coupled cluster", "not-scf-energy",
       "CCSD(T)"},
      {"gaussian_g16-A.03_b3lyp-td.log", Engine::gaussian, "TD", "not-scf-energy",
       "E(TD-HF/TD-DFT)"},
      {"gaussian_g16-A.03_b3lyp-freq.log", Engine::gaussian, "", "frequency-job", ""},
      {"gaussian_g16-A.03_b3lyp-scan.log", Engine::gaussian, "", "several-scf-energies", ""},
      {"gaussian_g16-A.03_rb3lyp-opt.log", Engine::gaussian, "", "", ""},
      {"gaussian_g16-A.03_ub3lyp-cation-sp.log", Engine::gaussian, "", "", ""},
      {"orca_5.0.0_rb3lyp-sp.log", Engine::orca, "", "no-energy-line", "", -382.055108614123},
      {"qchem_5.4.1_b3lyp-sp.log", Engine::qchem, "", "no-energy-line", "", -382.3003975729},
      {"nwchem_7.0.0_b3lyp-sp.log", Engine::nwchem, "", "no-energy-line", "", -382.308242007863},
      {"nwchem_6.5_hf-sp.log", Engine::nwchem, "", "no-energy-line", "", -379.768962491035},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    FileRow row;
    row.file = dir + "/" + c.file;
    read_file_row(row);
    const LogSummary& s = row.summary;
    EXPECT_EQ(s.engine, c.engine);
    EXPECT_EQ(s.termination, Termination::normal);
    EXPECT_EQ(s.not_scf, c.not_scf);
    EXPECT_EQ(s.levels.empty() || s.levels.back().label == "HF" ? "" : s.levels.back().label,
              c.level);
    EXPECT_EQ(s.final_energy.found, c.engine != Engine::gaussian);
    EXPECT_DOUBLE_EQ(s.final_energy.hartree, c.final_energy);
    if (c.engine == Engine::gaussian) {
      EXPECT_TRUE(s.from_archive);
      EXPECT_EQ(row.energy, SpEnerStatus::found);
    }
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
