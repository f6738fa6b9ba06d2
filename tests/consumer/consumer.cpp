// Calls a few mmutil routines through the installed headers and library; exits with 1 on
// the first wrong answer.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "mmutil/numeric.h"
#include "mmutil/text.h"

namespace {

int failures = 0;

void expect(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "consumer: wrong result of %s\n", what);
    ++failures;
  }
}

}  // namespace

int main() {
  char line[] = "\t mol1_anion.log  mol1_cation.log mol1_neutral.log \r\n";
  mmutil::c_trim(line);
  expect(std::strcmp(line, "mol1_anion.log  mol1_cation.log mol1_neutral.log") == 0, "c_trim");

  std::vector<std::string> names;
  expect(mmutil::tokenize(names, line, " ") && names.size() == 3 && names[2] == "mol1_neutral.log",
         "tokenize");

  const std::vector<std::string> words =
      mmutil::split_string(" SCF Done:  E(UB3LYP) =  -693.329689346     A.U.");
  expect(words.size() == 6 && words[4] == "-693.329689346", "split_string");

  expect(mmutil::iequals("NWchem", "nwCHEM") && mmutil::base_filename("run/EH01.dat") == "EH01.dat",
         "iequals, base_filename");

  if (failures == 0) std::puts("mmutil consumer: all routines answered as documented");
  return failures == 0 ? 0 : 1;
}
