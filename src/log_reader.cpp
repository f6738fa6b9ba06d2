#include "log_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "driver.h"
#include "error_report.h"
#include "mmutil/text.h"

LogStore g_log_data;

namespace {

// Reads the rest of `file` into `out`. A regular file is read with one call sized by its
// length; anything else (or a file that grew) doubles the buffer until the end.
void read_all(std::FILE* file, std::string& out) {
  struct stat info;
  const bool sized = fstat(fileno(file), &info) == 0 && S_ISREG(info.st_mode);
  out.resize(sized ? static_cast<std::size_t>(info.st_size) + 1 : std::size_t{1} << 16);
  std::size_t length = 0;
  for (;;) {
    length += std::fread(&out[length], 1, out.size() - length, file);
    if (length < out.size()) break;  // end of file or read error
    out.resize(out.size() * 2);
  }
  out.resize(length);
}

}  // namespace

bool read_log_store(const char* file_name, LogStore& store) {
  std::FILE* file = std::fopen(file_name, "r");
  if (file == nullptr) return false;
  read_all(file, store.bytes);
  std::fclose(file);
  index_log_entries(store);
  return true;
}

void index_log_entries(LogStore& store) {
  store.entry_start.clear();
  const char* const text = store.bytes.data();
  const std::size_t size = store.bytes.size();
  std::size_t pos = 0;
  while (pos < size) {
    const void* newline = std::memchr(text + pos, '\n', size - pos);
    const std::size_t line_end =
        newline != nullptr ? static_cast<const char*>(newline) - text + 1 : size;
    for (; pos < line_end; pos += std::min(kMaxEntryLength, line_end - pos)) {
      store.entry_start.push_back(pos);
    }
  }
}

std::string_view log_entry(const LogStore& store, std::size_t i) {
  const std::size_t begin = store.entry_start[i];
  const std::size_t end =
      i + 1 < store.entry_start.size() ? store.entry_start[i + 1] : store.bytes.size();
  std::string_view text(store.bytes.data() + begin, end - begin);
  text = text.substr(0, text.find('\0'));
  // A newline can only end an entry; one standing alone is kept.
  if (text.size() >= 2 && text.back() == '\n') text.remove_suffix(1);
  return text;
}

const LogStore& load_log_file(const char* file_name) {
  if (!read_log_store(file_name, g_log_data)) FAIL("Failed to open input file: %s\n", file_name);
  if (bVerbose) std::printf("INFO: number of lines in %s is %d\n", file_name, g_data_nlen());
  return g_log_data;
}

void release_log_store() { g_log_data = LogStore{}; }

const char* sp_ener_marker(int engine_code) {
  switch (engine_code) {
    case 2:  // Orca
    case 3:  // Qchem
      return "SCF Done";
    default:  // Gaussian, NWchem, and codes of 0 and below
      return "SCF Done";
  }
}

SpEnerResult scan_sp_ener(const LogStore& store, int engine_code) {
  if (engine_code > 4) return {SpEnerStatus::unknown_engine, 0, 0.0};
  const char* const marker = sp_ener_marker(engine_code);
  // The last marker wins; the first entry is never examined.
  for (std::size_t i = store.entry_start.size(); i-- > 1;) {
    const std::string_view text = log_entry(store, i);
    if (text.find(marker) == std::string_view::npos) continue;
    std::vector<std::string> fields;
    mmutil::tokenize(fields, std::string(text).c_str(), " ");
    if (fields.size() < 5) return {SpEnerStatus::too_few_fields, i, 0.0};
    return {SpEnerStatus::found, i, std::atof(fields[4].c_str())};
  }
  return {SpEnerStatus::marker_not_found, 0, 0.0};
}

double find_sp_ener(const char* file_name, int engine_code) {
  const SpEnerResult result = scan_sp_ener(g_log_data, engine_code);
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
    const std::string line(log_entry(g_log_data, result.entry));
    FAIL("Energy line in %s has fewer than five fields: %s\n", file_name, line.c_str());
  }
  return result.hartree;
}
