// The byte loops compiled with AVX2 (see byte_loops_impl.h); called only where the processor
// has it.
#include "byte_loops_impl.h"

std::size_t count_log_entries_avx2(std::string_view text) { return count_entries_loop(text); }

std::size_t rfind_marker_avx2(std::string_view text, std::string_view marker, std::size_t limit) {
  return rfind_before_loop(text, marker, limit);
}
