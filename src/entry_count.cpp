// The entry count of a text: its newlines, and the pieces of its long lines.
#include "entry_count_loop.h"

#ifdef ENTRY_COUNT_AVX2
std::size_t count_log_entries_avx2(std::string_view text);
#endif

std::size_t count_log_entries(std::string_view text) {
#ifdef ENTRY_COUNT_AVX2
  static const bool avx2 = __builtin_cpu_supports("avx2");
  if (avx2) return count_log_entries_avx2(text);
#endif
  return count_entries_loop(text);
}
