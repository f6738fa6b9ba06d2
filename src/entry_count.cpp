// The entry count of a text: its newlines, and the pieces of its long lines.

#include <algorithm>
#include <cstdint>

#include "log_reader.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// Bit i is set when p[i] is a newline, for the first n (at most 64) bytes of p.
std::uint64_t newline_mask(const char* p, std::size_t n) {
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < n; ++i) mask |= std::uint64_t{p[i] == '\n'} << i;
  return mask;
}

// The same for exactly 64 bytes, sixteen at a time where the processor allows it.
std::uint64_t newline_mask64(const char* p) {
#ifdef __SSE2__
  const __m128i newline = _mm_set1_epi8('\n');
  std::uint64_t mask = 0;
  for (int k = 0; k < 4; ++k) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * k));
    const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, newline)));
    mask |= std::uint64_t{bits} << (16 * k);
  }
  return mask;
#else
  return newline_mask(p, 64);
#endif
}

// Number of set bits, without a library call where the processor has no instruction for it.
std::size_t bit_count(std::uint64_t x) {
  x -= (x >> 1) & 0x5555555555555555u;
  x = (x & 0x3333333333333333u) + ((x >> 2) & 0x3333333333333333u);
  x = (x + (x >> 4)) & 0x0f0f0f0f0f0f0f0fu;
  return static_cast<std::size_t>((x * 0x0101010101010101u) >> 56);
}

}  // namespace

std::size_t count_log_entries(std::string_view text) {
  const char* const p = text.data();
  const std::size_t n = text.size();
  std::size_t entries = 0;
  std::size_t line_begin = 0;
  for (std::size_t block = 0; block < n; block += 64) {
    const std::size_t length = std::min<std::size_t>(64, n - block);
    const std::uint64_t mask =
        length == 64 ? newline_mask64(p + block) : newline_mask(p + block, length);
    if (mask == 0) continue;
    // The line that ends at the block's first newline may be long and make several entries;
    // the lines that end after it in the block are shorter than 64 and make one each.
    const std::size_t first = block + static_cast<std::size_t>(__builtin_ctzll(mask));
    entries += (first - line_begin) / kMaxEntryLength + bit_count(mask);
    line_begin = block + 64 - static_cast<std::size_t>(__builtin_clzll(mask));
  }
  if (line_begin < n) entries += (n - line_begin + kMaxEntryLength - 1) / kMaxEntryLength;
  return entries;
}
