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
  EXPECT_FALSE(read_gaussian_archive("x\n" + kArchive.substr(0, kArchive.size() - 6), a));
  EXPECT_FALSE(read_gaussian_archive("x\n SCF Done\n", a));
  EXPECT_EQ(method_key("U"), "U");  // R and U are prefixes only when a name follows
}

// An atom list that runs to the end of the kept head of a longer text is a part of the
// molecule: atoms and formula unknown. Seen whole, or ended within the head, it counts.
TEST(LogSummary, AtomListCutByTheHeadIsUnknown) {
  std::string head = " Entering Gaussian System\n #p B3LYP/6-31G(d)\n ---\n";
  head += " Charge = 0 Multiplicity = 1\n";
  for (int atom = 0; atom < 700; ++atom)
    head += atom % 2 == 0 ? " C  0. 0. 0.\n" : " H  0. 0. 1.\n";
  const std::string cut = head + " O  0. 0.";  // the head ends inside the list
  const LogSummary part = summarize_log(cut, "", false);
  EXPECT_EQ(part.atom_count, 0);
  EXPECT_EQ(part.formula, "");
  const LogSummary whole = summarize_log(cut, cut, true);
  EXPECT_EQ(whole.atom_count, 701);
  const LogSummary ended = summarize_log(head + "\n Variables:\n", "", false);
  EXPECT_EQ(ended.atom_count, 700);
  EXPECT_EQ(ended.formula, "C350H350");
}

}  // namespace
