// Fuzzes the line store's entry count and the energy search on arbitrary bytes, against the
// plain line reader they must agree with.
#include <cstdint>
#include <cstring>

#include "log_reader.h"
#include "reference_line_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> entries = line_reader_entries(bytes);
  if (count_log_entries(bytes) != entries.size()) __builtin_trap();
  const SpEnerResult got = scan_sp_ener(bytes, 1);
  const SpEnerResult expected = reference_scan(entries);
  if (got.status != expected.status || got.line != expected.line) __builtin_trap();
  // The same bits: a field such as "nan" converts to a NaN that equals nothing.
  if (std::memcmp(&got.hartree, &expected.hartree, sizeof got.hartree) != 0) __builtin_trap();
  return 0;
}
