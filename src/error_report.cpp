#include "error_report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void end_with_failure() {
  std::fflush(stdout);
  std::fflush(stderr);
  std::exit(kFailureStatus);
}

void fail(const char* source_file, int line, const char* format, ...) {
  mmutil::print_error_header(source_file, line);
  va_list args;
  va_start(args, format);
  std::vprintf(format, args);
  va_end(args);
  end_with_failure();
}
