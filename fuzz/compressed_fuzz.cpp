// Fuzzes the byte source on arbitrary bytes, compressed streams of every format among the
// seeds: a read fails only with a reason that names the format, plain bytes come back
// unchanged, and whether the text is whole, and what it is, does not depend on the size of the
// caller's blocks.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "byte_source.h"

namespace {

// Decompressed text beyond this is not read: a few bytes of some formats expand to gigabytes.
constexpr std::size_t kMostText = 4 << 20;

struct Reading {
  TextFormat format = TextFormat::plain;
  std::string text;
  bool failed = false;
  std::string error;
};

// Reads `data` through a byte source in blocks of `block` bytes.
Reading read_all(const std::uint8_t* data, std::size_t size, std::size_t block) {
  Reading reading;
  const int fd = memfd_create("input", 0);
  if (fd < 0 || write(fd, data, size) != static_cast<ssize_t>(size) || lseek(fd, 0, SEEK_SET)) {
    __builtin_trap();
  }
  ByteSource source;
  if (!open_byte_source(fd, source)) __builtin_trap();
  reading.format = source.format;
  std::string buffer(block, '\0');
  while (reading.text.size() < kMostText) {
    const long got = read_text(source, buffer.data(), block);
    if (got < 0) {
      reading.failed = true;
      reading.error = source.error;
      break;
    }
    if (got == 0) break;
    if (static_cast<std::size_t>(got) > block) __builtin_trap();
    reading.text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  if (source.format == TextFormat::plain && reading.text != std::string(data, data + size)) {
    __builtin_trap();
  }
  close_byte_source(source);
  close(fd);
  return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Reading large = read_all(data, size, 1 << 16);
  if (large.failed && large.error.find(format_name(large.format)) == std::string::npos) {
    __builtin_trap();
  }
  // Small odd blocks, sized by the last byte, end decoding steps anywhere in the text.
  const std::size_t block = size == 0 ? 1 : 1 + data[size - 1] % 61;
  const Reading small = read_all(data, size, block);
  const std::size_t common = std::min(large.text.size(), small.text.size());
  if (large.text.compare(0, common, small.text, 0, common) != 0) __builtin_trap();
  // Within the limit, both end the same way: the same text, or a failure (after as much text
  // as the blocks handed out before it; the library's word for damage may differ).
  if (large.text.size() < kMostText && small.text.size() < kMostText &&
      (large.failed != small.failed || (!large.failed && large.text != small.text))) {
    __builtin_trap();
  }
  return 0;
}
