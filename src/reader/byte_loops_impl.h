// The loops that look at every byte of a text: the entry count and the backward search for
// the marker. Compiled once for every processor (byte_loops.cpp) and once more with AVX2
// (byte_loops_avx2.cpp), which runs where the processor has it. The routines have internal
// linkage, so the two compilations never mix.
//
// The count is the number of newlines, one more for a last line without one, and the extra
// pieces of lines of 1024 characters or more. Newlines are counted 512 bytes at a time; a line
// that long holds 512 bytes without a newline wherever it lies, so only where a 512-byte chunk
// has none is the line measured.
#ifndef GET_INTER_ENER_BYTE_LOOPS_IMPL_H
#define GET_INTER_ENER_BYTE_LOOPS_IMPL_H

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

// Start of the last occurrence of `marker` (not empty) that lies wholly in the first `limit`
// bytes of `text`, or npos. Candidate starts are tested a vector at a time by the marker's
// first and last characters, then compared whole.
inline std::size_t rfind_before_loop(std::string_view text, std::string_view marker,
                                     std::size_t limit) {
  const std::size_t k = marker.size();
  if (limit < k) return std::string_view::npos;
  const char* const p = text.data();
  std::size_t starts = limit - k + 1;  // candidate starts are 0 .. starts - 1
#if defined(__AVX2__)
  const __m256i first = _mm256_set1_epi8(marker.front());
  const __m256i last = _mm256_set1_epi8(marker.back());
  while (starts >= 32) {
    const std::size_t b = starts - 32;
    const __m256i heads = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + b));
    const __m256i tails = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + b + k - 1));
    auto mask = static_cast<std::uint32_t>(_mm256_movemask_epi8(
        _mm256_and_si256(_mm256_cmpeq_epi8(heads, first), _mm256_cmpeq_epi8(tails, last))));
#elif defined(__SSE2__)
  const __m128i first = _mm_set1_epi8(marker.front());
  const __m128i last = _mm_set1_epi8(marker.back());
  while (starts >= 16) {
    const std::size_t b = starts - 16;
    const __m128i heads = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + b));
    const __m128i tails = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + b + k - 1));
    auto mask = static_cast<std::uint32_t>(_mm_movemask_epi8(
        _mm_and_si128(_mm_cmpeq_epi8(heads, first), _mm_cmpeq_epi8(tails, last))));
#endif
#if defined(__AVX2__) || defined(__SSE2__)
    while (mask != 0) {
      const unsigned bit = 31u - static_cast<unsigned>(__builtin_clz(mask));
      if (std::memcmp(p + b + bit, marker.data(), k) == 0) return b + bit;
      mask &= ~(std::uint32_t{1} << bit);
    }
    starts = b;
  }
#endif
  while (starts-- > 0) {
    if (p[starts] == marker.front() && std::memcmp(p + starts, marker.data(), k) == 0) {
      return starts;
    }
  }
  return std::string_view::npos;
}

}  // namespace

#endif  // GET_INTER_ENER_BYTE_LOOPS_IMPL_H
