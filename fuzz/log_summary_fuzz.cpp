// Fuzzes the check's reading of an output's head and tail (engine, termination, route section,
// charge line, atoms, the closing archive entry) on arbitrary text: nothing read out of bounds
// (the sanitizers), and the same summary whether the text is given whole or as its two ends.
#include <cstdint>
#include <string_view>

#include "log_summary.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const LogSummary whole = summarize_log(text, text, true);
  // A text short enough to lie in both windows reads the same when given as its two ends.
  const LogSummary ends = summarize_log(text, text, false);
  if (whole.engine != ends.engine || whole.termination != ends.termination) __builtin_trap();
  return 0;
}
