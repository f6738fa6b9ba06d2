// The transport utilities' fatal error report: a header on standard output naming the source
// file and line that report the failure, one specific message, and the end of the process
// with status 255.
#ifndef GET_INTER_ENER_ERROR_REPORT_H
#define GET_INTER_ENER_ERROR_REPORT_H

#include "mmutil/text.h"

// Exit status of every failure, and of a run that only prints the usage text.
constexpr int kFailureStatus = 255;

// Flushes both standard streams and ends the process with kFailureStatus.
[[noreturn]] void end_with_failure();

// The source position of a report, as the error header (mmutil::print_error_header) names it:
// every report of the energy job names the driver's source file, wherever the code that
// detects the failure lives, so that scripts can match one text; the line is the report's own.
#define REPORT_SITE "get_inter_ener.cpp", __LINE__

// Reports a failure at this source position and ends the process:
//   FAIL("Failed to open input file: %s\n", name);
#define FAIL(...) mmutil::fail_with_status(kFailureStatus, REPORT_SITE, __VA_ARGS__)

#endif  // GET_INTER_ENER_ERROR_REPORT_H
