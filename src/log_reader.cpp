// The process-wide line store and the reports of the reader that end the run.
#include "log_reader.h"

#include <cstdio>

#include "driver.h"
#include "error_report.h"

LogStore g_log_data;

const LogStore& load_log_file(const char* file_name) {
  if (!read_log_store(file_name, g_log_data)) FAIL("Failed to open input file: %s\n", file_name);
  if (bVerbose) std::printf("INFO: number of lines in %s is %zu\n", file_name, g_data_nlen());
  return g_log_data;
}

void release_log_store() { clear_log_store(g_log_data); }

double find_sp_ener(const char* file_name, int engine_code) {
  const SpEnerResult result = scan_sp_ener(g_log_data.text, engine_code);
  const char* const marker = sp_ener_marker(engine_code);
  switch (result.status) {
    case SpEnerStatus::unknown_engine:
      FAIL("Unknown compute engine: %d\nSTOP!\n", engine_code);
    case SpEnerStatus::marker_not_found:
      FAIL("string '%s' NOT found in %s\n", marker, file_name);
    case SpEnerStatus::too_few_fields:
    case SpEnerStatus::found:
      break;
  }
  if (bVerbose) std::printf("INFO: string '%s' found in %s\n", marker, file_name);
  if (result.status == SpEnerStatus::too_few_fields) {
    const std::string line(result.line);
    FAIL("Energy line in %s has fewer than five fields: %s\n", file_name, line.c_str());
  }
  return result.hartree;
}
