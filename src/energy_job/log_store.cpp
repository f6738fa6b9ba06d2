// The process-wide store and the reports that end the run.
#include "log_store.h"

#include <cstdio>

#include "driver.h"
#include "error_report.h"

LogScan g_log_data;

const LogScan& load_log_file(const char* file_name) {
  LogScanOptions options;
  options.count_entries = bVerbose;
  scan_log_file(file_name, options, g_log_data);
  switch (g_log_data.status) {
    case LogReadStatus::cannot_open:
      FAIL("Failed to open input file: %s\n", file_name);
    case LogReadStatus::read_failed:
      FAIL("Failed to read input file: %s: %s\n", file_name, g_log_data.error.c_str());
    case LogReadStatus::ok:
      break;
  }
  if (bVerbose) {
    std::printf("INFO: number of lines in %s is %llu\n", file_name,
                static_cast<unsigned long long>(g_data_nlen()));
  }
  return g_log_data;
}

void release_log_store() { g_log_data = LogScan{}; }

double find_sp_ener(const char* file_name, int engine_code) {
  const char* const marker = sp_ener_marker(engine_code);
  if (engine_code > 4) FAIL("Unknown compute engine: %d\nSTOP!\n", engine_code);
  if (!g_log_data.marker_found) FAIL("string '%s' NOT found in %s\n", marker, file_name);
  if (bVerbose) std::printf("INFO: string '%s' found in %s\n", marker, file_name);
  const SpEnerResult result = sp_ener_from_line(g_log_data.energy_entry);
  if (result.status == SpEnerStatus::too_few_fields) {
    FAIL("Energy line in %s has fewer than five fields: %s\n", file_name,
         g_log_data.energy_entry.c_str());
  }
  return result.hartree;
}
