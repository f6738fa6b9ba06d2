// Fuzzes the check's reading of an output's head and tail (engine, termination, route section,
// charge line, atoms, the closing archive entry; every engine's statements and totals) on
// arbitrary text: nothing read out of bounds (the sanitizers), given whole, as a head alone or
// as a tail alone.
#include <cstdint>
#include <string_view>

#include "log_summary.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  summarize_log(text, text, true);
  summarize_log(text, {}, false);
  summarize_log({}, text, false);
  return 0;
}
