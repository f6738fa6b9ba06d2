// Q-Chem's reader (engine_qchem.cpp) on small texts in its layouts: the input's echo, the
// orientation table, endings, SCF failures, <S^2> and the job's level among the totals of its
// correlation modules (cdman, ccman, ccman2).
#include <gtest/gtest.h>

#include <string>

#include "engine_cases.h"

namespace {

const std::string kBanner = "                  Welcome to Q-Chem\n";
const std::string kDashes = "--------------------------------------------------------------\n";

// The echo of a job whose $rem is `rem` and whose $molecule is `molecule` (water by default).
std::string echo(const std::string& rem, const std::string& molecule =
                                             " 0 1\n O 0.0 0.0 0.1\n H 0.0 0.7 -0.4\n"
                                             " H 0.0 -0.7 -0.4\n") {
  return "User input:\n" + kDashes + "$molecule\n" + molecule + "$end\n\n$rem\n" + rem + "$end\n" +
         kDashes;
}

const std::string kOrientation =
    "             Standard Nuclear Orientation (Angstroms)\n"
    "    I     Atom           X                Y                Z\n"
    " ----------------------------------------------------------------\n"
    "    1      C       0.0000000000     0.0000000000     0.0000000000\n"
    "    2      O       0.0000000000     0.0000000000     1.2000000000\n"
    " ----------------------------------------------------------------\n"
    " Requested basis set is cc-pVDZ\n";

const std::string kScf = " Total energy in the final basis set =      -74.9643287668\n";
const std::string kEnd = "        *  Thank you very much for using Q-Chem.  Have a nice day.  *\n";

TEST(EngineQchem, StatementsAndLevels) {
  const struct {
    std::string text;
    const char* expect;  // charge mult atoms formula method basis job SCF final-level final
  } cases[] = {
      {kBanner +
           echo(" method = b3lyp\n basis = sto-3g\n unrestricted = true\n",
                " -1 2\n O 0 0 0\n"
                " H 0 0 1\n") +
           "<S^2> =          0.769521616\n" + kScf + kEnd,
       "-1 2 2 HO B3LYP STO-3G SP 1 SCF -74.9643287668 s2 0.7695"},
      // The orientation table outranks the echo's atoms and the stated basis its keyword.
      {kBanner + echo("jobtype opt\nMETHOD PBE0\nBASIS cc-pvdz\n") + kOrientation + kScf +
           "**  OPTIMIZATION CONVERGED  **\n" + kScf + kEnd,
       "0 1 2 CO PBE0 CC-PVDZ Opt 2 SCF -74.9643287668 converged"},
      // Q-Chem 4's EXCHANGE and CORRELATION; cdman's MP2 total, not its correlation energy.
      {kBanner + echo("EXCHANGE hf\nCORRELATION mp2\nBASIS sto-3g\n") + kScf +
           " Total  MP2   correlation energy =                    -0.03795337 au\n"
           "        MP2         total energy =                   -75.00228214 au\n" +
           kEnd,
       "0 1 3 H2O MP2 STO-3G SP 1 MP2 -75.00228214"},
      {kBanner + echo("exchange b\ncorrelation lyp\njob_type freq\nbasis 6-31g*\n") + kScf + kEnd,
       "0 1 3 H2O B+LYP 6-31G* Freq 1 SCF -74.9643287668"},
      // ccman2 repeats the SCF total rounded: the SCF's own line counts.
      {kBanner + echo("method = mp3\nbasis = sto-3g\n") + kScf +
           " SCF energy                 = -74.96432877\n MP2 energy                 = "
           "-75.00237871\n"
           " MP3 correlation energy     =  -0.01050053\n MP3 energy                 = "
           "-75.01287923\n" +
           kEnd,
       "0 1 3 H2O MP3 STO-3G SP 1 MP3 -75.01287923"},
      {kBanner + echo("method = mp4sdq\nbasis = sto-3g\n") + kScf +
           "EHF                    =   -74.964328767\nEMP2                   =   -75.002378705\n"
           "EMP4SDQ                =   -75.016089019\nEMP4                   =   -75.016143404\n" +
           kEnd,
       "0 1 3 H2O MP4SDQ STO-3G SP 1 MP4(SDQ) -75.016089019"},
      {kBanner + echo("method = ccsd(t)\nbasis = sto-3g\n") + kScf +
           " CCSD total energy          = -75.01254\n CCSD(T) total energy       = -75.01258\n" +
           kEnd,
       "0 1 3 H2O CCSD(T) STO-3G SP 1 CCSD(T) -75.01258"},
      // Several jobs: the last echo is the job's; its molecule read from the job before.
      {kBanner + echo("method hf\nbasis sto-3g\n") + kScf + kEnd + kBanner +
           echo("method b3lyp\nbasis sto-3g\njobtype pes_scan\ncis_n_roots 4\n", "read\n") +
           kOrientation + " Total energy in the final basis set =      -75.3\n" +
           "   SCF failed to converge\n Q-Chem fatal error occurred in module scfman\n",
       "0 0 2 CO B3LYP CC-PVDZ Scan+ES 2 SCF -75.3 failed"},
  };
  for (const auto& c : cases) expect_summary(Engine::qchem, c.text, c.expect);
  // An orientation table cut by the end of a head is no count: the echo's atoms are.
  const std::string head = kBanner + echo("method hf\n") + kOrientation.substr(0, 300);
  EXPECT_EQ(summarize_log(head, "", false).atom_count, 3);
  // A molecule of Z-matrix lines with a dummy centre has no atom count.
  const std::string dummy = kBanner + echo("method hf\n", " 0 1\n O\n X 1 1.0\n H 1 R 2 A\n");
  EXPECT_EQ(summarize_log(dummy, dummy, true).atom_count, 0);
}

}  // namespace
