// A user's program built against the installed mmutil: one routine of each public header,
// called through the installed headers and library. Exits with 1 on a wrong answer.
#include <cstdio>

#include "mmutil/numeric.h"
#include "mmutil/text.h"

int main() {
  const std::vector<std::string> words =
      mmutil::split_string(" SCF Done:  E(UB3LYP) =  -693.329689346     A.U.");
  const double x[3] = {3, 4, 12};
  if (words.size() != 6 || words[4] != "-693.329689346" || mmutil::get_magnitude(x) != 13) {
    std::fputs("consumer: a routine of the installed mmutil answered wrongly\n", stderr);
    return 1;
  }
  std::puts("mmutil consumer: all routines answered as documented");
  return 0;
}
