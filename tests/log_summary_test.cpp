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

}  // namespace
