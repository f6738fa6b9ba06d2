// The summary of an output: a cut-off archive entry and method names at their limits (what whole
// entries give, the recorded check_* runs show).
#include "log_summary.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string kArchive =
    " 1\\1\\GINC-N\\SP\\RCCSD(T)-FC\\cc-pVDZ\\C2H4(1-,2)\\U\\22-Nov-2026\\0\\\\#P CCSD(T)/cc\n"
    " -pVDZ\\\\t\\\\-1,2\\C,0.,0.,0.66\\C,0.,0.,-0.66\\H,0.,0.9,1.2\\H,0.,-0.9,1.2\\H,0.,0.\n"
    " 9,-1.2\\H,0.,-0.9,-1.2\\\\Version=X\\State=2-A\\HF=-78.05\\MP2=-78.3\\CCSD(T)=-78.\n"
    " 391\\RMSD=1.e-09\\PG=C01 [X(C2H4)]\\\\@\n";

// Only a whole archive entry is read: one cut off before its closing "\\@" leaves the summary
// to the output's head, as no entry does (what a whole one gives, the recorded runs show).
// Method names lose their R or U prefix only when a name follows.
TEST(LogSummary, WholeArchiveEntriesAndMethodNames) {
  GaussianArchive a;
  EXPECT_TRUE(read_gaussian_archive("text\n" + kArchive + " Normal termination\n", a));
  EXPECT_EQ(a.levels.back().label, "CCSD(T)");
  EXPECT_FALSE(read_gaussian_archive("x\n" + kArchive.substr(0, kArchive.size() - 6), a));
  // The wrap splits the closing "\\@" after its first or second character (the recorded run
  // check_archive_wrapped_end shows both in a crystal); a blank line or a line without the
  // leading blank ends the entry.
  const std::string body = kArchive.substr(0, kArchive.size() - 4);  // without "\\@\n"
  const struct {
    const char* end;
    bool read;
  } ends[] = {{"\\\n \\@\n", true},
              {"\\\\\n @\n", true},
              {"\\\\\n\n @\n", false},  // a blank line: cut off
              {"\\\\\n@\n", false}};    // no leading blank: not the entry's
  for (const auto& c : ends) {
    SCOPED_TRACE(c.end);
    a = GaussianArchive{};
    EXPECT_EQ(read_gaussian_archive("x\n" + body + c.end, a), c.read);
    EXPECT_EQ(a.levels.empty() ? "" : a.levels.back().label, c.read ? "CCSD(T)" : "");
  }
  EXPECT_FALSE(read_gaussian_archive("x\n SCF Done\n", a));
  EXPECT_EQ(method_key("U"), "U");  // R and U are prefixes only when a name follows
  // A TD job's method: its ground state compared, the TD kind kept.
  EXPECT_EQ(method_key("RB3LYP TD-FC"), "B3LYP");
  EXPECT_EQ(not_scf_kind("RB3LYP TD-FC", ""), "TD");
}

// The archive's job type says what kind of run it was: a transition-state search is an
// optimisation too, converged when the archive calls it final ("FTS"), not when partial.
TEST(LogSummary, JobKindsFromTheArchive) {
  const struct {
    const char* job;
    bool optimisation, converged, frequency;
  } cases[] = {{"SP", false, false, false},  {"FOpt", true, true, false},
               {"POpt", true, false, false}, {"FTS", true, true, false},
               {"PTS", true, false, false},  {"Freq", false, false, true}};
  for (const auto& c : cases) {
    std::string text = " Entering Gaussian System, Link 0=g16\n" + kArchive;
    text.replace(text.find("\\SP\\"), 4, std::string("\\") + c.job + "\\");
    const LogSummary s = summarize_log(text, text, true);
    EXPECT_EQ(s.job_type, c.job);
    EXPECT_EQ(s.optimisation, c.optimisation) << c.job;
    EXPECT_EQ(s.converged, c.converged) << c.job;
    EXPECT_EQ(s.frequency, c.frequency) << c.job;
  }
}

// An atom list that runs to the end of the kept head of a longer text is a part of the
// molecule: atoms and formula unknown. Seen whole, or ended within the head, it counts.
TEST(LogSummary, AtomListCutByTheHeadIsUnknown) {
  std::string head = " Entering Gaussian System\n #p B3LYP/6-31G(d)\n ---\n";
  head += " Charge = 0 Multiplicity = 1\n";
  for (int atom = 0; atom < 700; ++atom)
    head += atom % 2 == 0 ? " C  0. 0. 0.\n" : " H  0. 0. 1.\n";
  // The head ends inside the list, inside a line of any shape: never a count of the part.
  for (const char* rest : {" O  0. 0.", "  ", " 0.12", " C"}) {
    const LogSummary part = summarize_log(head + rest, "", false);
    EXPECT_EQ(part.atom_count, 0) << rest;
    EXPECT_EQ(part.formula, "") << rest;
  }
  const std::string cut = head + " O  0. 0.";
  const LogSummary whole = summarize_log(cut, cut, true);
  EXPECT_EQ(whole.atom_count, 701);
  const LogSummary ended = summarize_log(head + "\n Variables:\n", "", false);
  EXPECT_EQ(ended.atom_count, 700);
  EXPECT_EQ(ended.formula, "C350H350");
}

}  // namespace

// The final energy of the other engines: the last total-energy line in each engine's own
// shapes, its level named (the recorded run check_correlated_other_engines shows one shape of
// each engine in a crystal); lines that look alike but hold no total are passed over.
TEST(LogSummary, FinalEnergyOfTheHighestLevel) {
  const struct {
    Engine engine;
    const char* text;
    const char* level;  // "" for none found
    double hartree;
  } cases[] = {
      {Engine::orca,
       "E(MP2)  ...  -76.1\nMP2 TOTAL ENERGY:  -76.2 Eh\nFINAL SINGLE POINT ENERGY -76.2\n", "MP2",
       -76.2},
      {Engine::orca, "MP2 TOTAL ENERGY:      -76.2 Eh\n", "", 0.0},  // no final line: none
      {Engine::orca,
       "Total Energy  :  -76.0 Eh\nE(X)  :  -8.9 Eh\nFINAL SINGLE POINT ENERGY -76.0\n", "SCF",
       -76.0},
      {Engine::qchem,
       " Total energy in the final basis set =  -76.0\n RI-MP2 TOTAL ENERGY  =  -76.2 au\n",
       "RI-MP2", -76.2},
      {Engine::qchem, " CCSD total energy  = -76.23\n CCSD(T) total energy = -76.24\n", "CCSD(T)",
       -76.24},
      {Engine::qchem, " Total energy for state  1:  -75.7 au\n", "", 0.0},
      {Engine::qchem, " Total  MP2   correlation energy =  -0.2 au\n", "", 0.0},
      {Engine::nwchem, " CCSD(T) total energy / hartree  =  -76.24\n", "CCSD(T)", -76.24},
      {Engine::nwchem, " Total SCF energy =  -76.0\n MBPT(2) total energy / hartree = -76.2\n",
       "MBPT(2)", -76.2},
      {Engine::nwchem, " Total times  cpu:  1.2s\n", "", 0.0},
      {Engine::gaussian, " MP2 total energy = -76.2\n", "", 0.0},  // Gaussian: its archive
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const FinalEnergyLine f = read_final_energy(c.engine, c.text);
    EXPECT_EQ(f.found ? f.level : "", c.level);
    EXPECT_EQ(f.hartree, c.hartree);
  }
}
