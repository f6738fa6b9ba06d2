#include "error_report.h"

#include <cstdio>
#include <cstdlib>

void end_with_failure() {
  std::fflush(stdout);
  std::fflush(stderr);
  std::exit(kFailureStatus);
}
