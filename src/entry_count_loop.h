// The entry count loop, compiled once for every processor and once more, where the processor
// has it, with its wider vector instructions (entry_count_avx2.cpp). Its routines have
// internal linkage, so the two compilations never mix.
//
// The count is the number of newlines, one more for a last line without one, and the extra
// pieces of lines of 1024 characters or more. Newlines are counted 512 bytes at a time; a line
// that long holds 512 bytes without a newline wherever it lies, so only where a 512-byte chunk
// has none is the line measured.
#ifndef GET_INTER_ENER_ENTRY_COUNT_LOOP_H
#define GET_INTER_ENER_ENTRY_COUNT_LOOP_H

#include <cstdint>
#include <cstring>
#include <string_view>

#include "log_reader.h"

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr std::size_t kChunk = 512;

// Number of newlines in the kChunk bytes at p.
inline std::size_t newlines_in_chunk(const char* p) {
#if defined(__AVX2__)
  const __m256i newline = _mm256_set1_epi8('\n');
  __m256i count = _mm256_setzero_si256();  // per byte: at most kChunk / 32 = 16
  for (std::size_t i = 0; i < kChunk; i += 32) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
    count = _mm256_sub_epi8(count, _mm256_cmpeq_epi8(bytes, newline));
  }
  const __m256i sums = _mm256_sad_epu8(count, _mm256_setzero_si256());
  return static_cast<std::size_t>(_mm256_extract_epi64(sums, 0) + _mm256_extract_epi64(sums, 1) +
                                  _mm256_extract_epi64(sums, 2) + _mm256_extract_epi64(sums, 3));
#elif defined(__SSE2__)
  const __m128i newline = _mm_set1_epi8('\n');
  __m128i count = _mm_setzero_si128();  // per byte: at most kChunk / 16 = 32
  for (std::size_t i = 0; i < kChunk; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    count = _mm_sub_epi8(count, _mm_cmpeq_epi8(bytes, newline));
  }
  const __m128i sums = _mm_sad_epu8(count, _mm_setzero_si128());
  return static_cast<std::size_t>(_mm_cvtsi128_si32(sums) +
                                  _mm_cvtsi128_si32(_mm_srli_si128(sums, 8)));
#else
  std::size_t count = 0;
  for (std::size_t i = 0; i < kChunk; ++i) count += p[i] == '\n';
  return count;
#endif
}

// Entries of a line of `length` bytes, its newline included: one per started 1023.
inline std::size_t line_entries(std::size_t length) {
  return (length + kMaxEntryLength - 1) / kMaxEntryLength;
}

// Number of entries of `text`.
inline std::size_t count_entries_loop(std::string_view text) {
  const char* const p = text.data();
  const std::size_t n = text.size();
  std::size_t entries = 0;
  std::size_t at = 0;  // a line start; the newlines before it are counted
  while (n - at >= kChunk) {
    const std::size_t newlines = newlines_in_chunk(p + at);
    if (newlines > 0) {
      entries += newlines;
      at += kChunk;
      continue;
    }
    // The line through this chunk may be long: measure it from its start, after the last
    // newline before the chunk (counted already), to its own newline, and go on after it.
    const void* before = memrchr(p, '\n', at);
    const std::size_t start = before != nullptr ? static_cast<const char*>(before) - p + 1 : 0;
    const void* end = std::memchr(p + at + kChunk, '\n', n - at - kChunk);
    if (end == nullptr) return entries + line_entries(n - start);
    at = static_cast<std::size_t>(static_cast<const char*>(end) - p) + 1;
    entries += line_entries(at - start);
  }
  // Fewer than kChunk bytes are left, and a newline stands in the kChunk bytes before them
  // (or they start a line): the last line, with or without a newline, is one entry.
  for (std::size_t i = at; i < n; ++i) entries += p[i] == '\n';
  if (n > 0 && p[n - 1] != '\n') ++entries;
  return entries;
}

}  // namespace

#endif  // GET_INTER_ENER_ENTRY_COUNT_LOOP_H
