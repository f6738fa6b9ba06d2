// NWChem's reader (engine_nwchem.cpp) on small texts in the layouts of versions 6 and 7: the
// statements of its modules, the job's level among the totals it prints, and a cut head.
#include <gtest/gtest.h>

#include <string>

#include "engine_cases.h"

namespace {

const std::string kBanner =
    "             Northwest Computational Chemistry Package (NWChem) 7.0.2\n"
    "             --------------------------------------------------------\n";
const std::string kEnd = "\n Total times  cpu:        2.9s     wall:        3.0s\n";

std::string echo(const std::string& deck) {
  return "============================== echo of input deck ==============================\n" +
         deck +
         "================================================================================\n";
}

// The geometry's atom table with the rows `rows` ("    1 C   6.0000  0.0 0.0 0.0").
std::string geometry(const std::string& rows) {
  return "                             Geometry \"geometry\" -> \"\"\n"
         "                             -------------------------\n\n"
         " Output coordinates in angstroms (scale by  1.889725989 to convert to a.u.)\n\n"
         "  No.       Tag          Charge          X              Y              Z\n"
         " ---- ---------------- ---------- -------------- -------------- --------------\n" +
         rows + "\n";
}

const std::string kWater = geometry(
    "    1 O                    8.0000     0.00000000     0.00000000     0.11700000\n"
    "    2 H                    1.0000     0.00000000     0.75700000    -0.46700000\n"
    "    3 H                    1.0000     0.00000000    -0.75700000    -0.46700000\n");

std::string basis(const std::string& rows) {
  return " Summary of \"ao basis\" -> \"ao basis\" (cartesian)\n"
         " ------------------------------------------------------------------------------\n"
         "       Tag                 Description            Shells   Functions and Types\n"
         " ---------------- ------------------------------  ------  ---------------------\n" +
         rows + "\n";
}

const std::string kSto3g = basis(
    " O                           sto-3g                  3        5   2s1p\n"
    " H                           sto-3g                  1        1   1s\n");

std::string dft_header(int charge, int mult, const std::string& xc) {
  return "          Wavefunction type:  spin polarized.\n"
         "          No. of atoms     :     3\n"
         "          Charge           :    " +
         std::to_string(charge) + "\n          Spin multiplicity:     " + std::to_string(mult) +
         "\n\n              XC Information\n              --------------\n" + xc + "\n";
}

const std::string kB3lyp =
    "                         B3LYP Method XC Potential\n"
    "                     Hartree-Fock (Exact) Exchange  0.200\n";

std::string scf_header(const std::string& lines, const std::string& wavefunction) {
  return "  ao basis        = \"ao basis\"\n  functions       =     7\n  atoms           =     "
         "3\n" +
         lines + "  wavefunction    = " + wavefunction + "\n";
}

struct Case {
  const char* name;
  std::string text;
  const char* expect;  // summary_line()
};

// Every statement in each layout: 7.x with the input echoed, 6.x without, the SCF module's
// wavefunctions, the correlated modules, TDDFT, geometry optimisation and frequencies.
TEST(EngineNwchem, StatementsOfEachModule) {
  const std::string dft_energy = "         Total DFT energy =      -76.012345678901\n";
  const std::string scf_energy = "         Total SCF energy =    -74.962706598573\n";
  const Case cases[] = {
      {"7.x DFT anion, echoed",
       echo("charge -1\ndft\n  xc b3lyp; mult 2\nend\ntask dft\n") + kBanner + kWater + kSto3g +
           dft_header(-1, 2, kB3lyp) + dft_energy +
           "      <S2> =      0.7523 (Exact =     0.7500)\n" + kEnd,
       "-1 2 3 H2O B3LYP STO-3G SP 1 DFT -76.012345678901 s2 0.7523"},
      {"6.x DFT, no echo; a functional of its own",
       kBanner + kWater + kSto3g + dft_header(0, 1, "   Becke 1988 Exchange Functional  1.000\n") +
           dft_energy + kEnd,
       "0 1 3 H2O - STO-3G SP 1 DFT -76.012345678901"},
      {"combination from the echoed xc line",
       echo("dft\n xc becke88 lyp\nend\n") + kBanner + kWater +
           dft_header(0, 1, "   Becke 1988 Exchange Functional  1.000\n") + dft_energy,
       "0 1 3 H2O BECKE88+LYP - SP 1 DFT -76.012345678901"},
      {"exact exchange alone is HF",
       kBanner + dft_header(0, 1, "     Hartree-Fock (Exact) Exchange  1.000\n") + dft_energy,
       "0 1 0 - HF - SP 1 DFT -76.012345678901"},
      {"UHF cation",
       kBanner + kWater + kSto3g +
           scf_header(
               "  alpha electrons =     5\n  beta  electrons =     4\n  charge          =   1.00\n",
               "UHF ") +
           scf_energy +
           "                       Sz =      0.5000\n"
           "                 Sz(Sz+1) =      0.7500\n                      S^2 =      0.7552\n" +
           kEnd,
       "1 2 3 H2O UHF STO-3G SP 1 SCF -74.962706598573 s2 0.7552"},
      {"ROHF cation",
       kBanner +
           scf_header(
               "  closed shells   =     4\n  open shells     =     1\n  charge          =   1.00\n",
               "ROHF") +
           scf_energy,
       "1 2 0 - ROHF - SP 1 SCF -74.962706598573"},
      {"MP2 job: the MP2 total, not the SCS-MP2 after it",
       kBanner + kWater +
           scf_header("  open shells     =     0\n  charge          =   0.00\n", "RHF") +
           scf_energy +
           "          Total MP2 energy           -75.002378700349\n"
           "          Total SCS-MP2 energy               -75.008093676179\n" +
           kEnd,
       "0 1 3 H2O MP2 - SP 1 MP2 -75.002378700349"},
      {"coupled cluster module: its level of theory",
       kBanner + " level of theory    ccsd\n Total MP2 energy:            -76.23\n"
                 " Total CCSD energy:            -76.240034717016229\n"
                 " Total SCS-CCSD energy:                 -76.29\n",
       "0 0 0 - CCSD - SP 0 CCSD -76.2400347170162"},
      {"task ccsd(t) echoed",
       echo("task ccsd(t)\n") + kBanner +
           " Total CCSD energy:            -76.24\n Total CCSD+T(CCSD) energy:  -76.2431\n"
           " Total CCSD(T) energy:                 -76.243083400615419\n",
       "0 0 0 - CCSD(T) - SP 0 CCSD(T) -76.2430834006154"},
      {"tensor contraction engine",
       echo("tce\n ccsd(t)\nend\ntask tce energy\n") + kBanner + scf_energy +
           " CCSD total energy / hartree       =       -75.011895464169399\n"
           " CCSD[T] total energy / hartree       =       -75.011972881213552\n"
           " CCSD(T) total energy / hartree       =       -75.011962915832711\n",
       "0 0 0 - CCSD(T) - SP 1 CCSD(T) -75.0119629158327"},
      {"TDDFT: the ground state's total",
       kBanner + dft_header(0, 1, kB3lyp) + dft_energy +
           "      <S2> =      0.7523 (Exact =     0.7500)\n"
           "                                NWChem TDDFT Module\n"
           "  Root   1         a              0.000479490 a.u.                0.0130 eV\n"
           "  <S2> =   0.9633\n     Excited state energy =    -74.882151041614\n",
       "0 1 0 - B3LYP - ES 1 DFT -76.012345678901 s2 0.7523"},
      {"optimisation then frequencies, echoed",
       echo("task dft optimize\ntask dft freq\n") + kBanner + dft_header(0, 1, kB3lyp) +
           dft_energy + "      Optimization converged\n" + dft_energy + kEnd,
       "0 1 0 - B3LYP - Opt+Freq 2 DFT -76.012345678901 converged"},
      {"modules run: optimisation short of convergence",
       kBanner + "                           NWChem Geometry Optimization\n" + dft_energy +
           " Failed to converge in maximum number of steps or available time\n",
       "0 0 0 - - - Opt 1 DFT -76.012345678901"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    expect_summary(Engine::nwchem, c.text, c.expect);
  }
}

// Tags name the element whatever follows it; ghost and dummy atoms are no atoms; bases that
// differ by element are named tag by tag; a table cut by the end of a head is unknown.
TEST(EngineNwchem, AtomsBasesAndCutTables) {
  const std::string rows =
      "    1 C1                   6.0000     0.0     0.0     0.0\n"
      "    2 CA                   6.0000     0.0     0.0     1.5\n"
      "    3 Cl                  17.0000     0.0     0.0     3.0\n"
      "    4 bqH                  0.0000     0.0     0.0     4.0\n"
      "    5 o                    8.0000     0.0     0.0     5.0\n";
  const std::string text =
      kBanner + geometry(rows) +
      basis(
          " C1                          6-31g*                  6       15   3s2p1d\n"
          " H                           sto-3g                  1        1   1s\n");
  LogSummary s = summarize_log(text, text, true);
  EXPECT_EQ(s.atom_count, 4);
  EXPECT_EQ(s.formula, "C2ClO");
  EXPECT_EQ(s.basis, "C1:6-31G*,H:STO-3G");
  // The input module's summary for every atom: "*  sto-3g  on all atoms".
  const std::string all =
      kBanner + basis(" *                           sto-3g                   on all atoms \n");
  EXPECT_EQ(summarize_log(all, all, true).basis, "STO-3G");
  // Cut by the end of the head: neither the atoms nor the basis of a part.
  const std::string cut = kBanner + geometry(rows).substr(0, geometry(rows).rfind("    5 o"));
  s = summarize_log(cut, "", false);
  EXPECT_EQ(s.atom_count, 0);
  EXPECT_EQ(s.formula, "");
  const std::string cut_basis = kBanner + kSto3g.substr(0, kSto3g.rfind(" H "));
  EXPECT_EQ(summarize_log(cut_basis, "", false).basis, "");
}

// How the run ended and whether its last SCF converged: "Calculation failed to converge"
// before the last total is the last SCF's; before an earlier one, an SCF that was redone.
TEST(EngineNwchem, EndingsAndScfFailures) {
  const std::string failed = "      Calculation failed to converge\n";
  const std::string total = "         Total DFT energy =      -75.311951888240\n";
  const std::string error =
      " dft energy failed\n This type of error is most commonly associated with calculations "
      "not reaching convergence criteria\n For more information see the NWChem manual at "
      "https://github.com/nwchemgit/nwchem/wiki\n";
  const struct {
    std::string text;
    Termination end;
    bool scf_failed;
    int scf_count;
  } cases[] = {
      {kBanner + failed + total + error, Termination::error, true, 1},
      {kBanner + failed + total + total + kEnd, Termination::normal, false, 2},
      {kBanner + total + failed + total + kEnd, Termination::normal, true, 2},
      {kBanner + total +
           " There is an error in the input file\n For more information see the "
           "NWChem manual at http://www.nwchem-sw.org\n",
       Termination::error, false, 1},
      {kBanner + total, Termination::none, false, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const LogSummary s = summarize_log(c.text, c.text, true);
    EXPECT_EQ(s.termination, c.end);
    EXPECT_EQ(s.scf_failed, c.scf_failed);
    EXPECT_EQ(s.scf_count, c.scf_count);
  }
  EXPECT_EQ(summarize_log(cases[1].text, cases[1].text, false).scf_count, -1);
}

}  // namespace
