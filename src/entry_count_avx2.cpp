// The entry count loop compiled with AVX2 (see entry_count_loop.h); called only
// where the processor has them.
#include "entry_count_loop.h"

std::size_t count_log_entries_avx2(std::string_view text) { return count_entries_loop(text); }
