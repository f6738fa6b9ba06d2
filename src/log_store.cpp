// The line store: one output file's bytes held as one read-only text, and its entry count.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "input_file.h"
#include "log_reader.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// Reads the rest of `fd` into `out`, doubling the buffer until the end. A read error ends the
// text where it happened.
void read_all(int fd, std::string& out) {
  out.resize(std::size_t{1} << 16);
  std::size_t length = 0;
  for (;;) {
    const ssize_t got = read(fd, &out[length], out.size() - length);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    length += static_cast<std::size_t>(got);
    if (length == out.size()) out.resize(out.size() * 2);
  }
  out.resize(length);
  out.shrink_to_fit();
}

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

bool read_log_store(const char* file_name, LogStore& store) {
  struct stat info {};
  const int fd = open_input_fd(file_name, info);
  if (fd < 0) return false;
  clear_log_store(store);
  if (S_ISREG(info.st_mode) && info.st_size > 0) {
    // A regular file is mapped: no copy, and only the pages that are looked at are touched.
    const auto length = static_cast<std::size_t>(info.st_size);
    void* const mapping = mmap(nullptr, length, PROT_READ, MAP_PRIVATE, fd, 0);
    if (mapping != MAP_FAILED) {
      close(fd);
      store.mapping = mapping;
      store.mapped_length = length;
      store.text = std::string_view(static_cast<const char*>(mapping), length);
      return true;
    }
  }
  // Pipes and devices have no length to map; an empty file needs no mapping.
  read_all(fd, store.buffer);
  close(fd);
  store.text = store.buffer;
  return true;
}

void clear_log_store(LogStore& store) {
  if (store.mapping != nullptr) munmap(store.mapping, store.mapped_length);
  store.mapping = nullptr;
  store.mapped_length = 0;
  store.text = {};
  std::string().swap(store.buffer);
}

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
