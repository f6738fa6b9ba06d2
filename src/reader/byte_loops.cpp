// The byte loops for every processor, and the choice of their AVX2 build where the processor
// has it.
#include "byte_loops.h"

#include "byte_loops_impl.h"
#include "log_reader.h"

#ifdef BYTE_LOOPS_AVX2
std::size_t count_log_entries_avx2(std::string_view text);
std::size_t rfind_marker_avx2(std::string_view text, std::string_view marker, std::size_t limit);

namespace {
bool has_avx2() {
  static const bool avx2 = (__builtin_cpu_init(), __builtin_cpu_supports("avx2"));
  return avx2;
}
}  // namespace
#endif

std::size_t count_log_entries(std::string_view text) {
#ifdef BYTE_LOOPS_AVX2
  if (has_avx2()) return count_log_entries_avx2(text);
#endif
  return count_entries_loop(text);
}

std::size_t rfind_marker(std::string_view text, std::string_view marker, std::size_t limit) {
#ifdef BYTE_LOOPS_AVX2
  if (has_avx2()) return rfind_marker_avx2(text, marker, limit);
#endif
  return rfind_before_loop(text, marker, limit);
}
