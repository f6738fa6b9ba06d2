#include "byte_source.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

// Reads into `out` until it is full or the input ends; a pipe may deliver a byte at a time.
long read_fully(int fd, unsigned char* out, std::size_t capacity, std::string& error) {
  std::size_t length = 0;
  while (length < capacity) {
    const ssize_t got = read(fd, out + length, capacity - length);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = std::strerror(errno);
      return -1;
    }
    if (got == 0) break;
    length += static_cast<std::size_t>(got);
  }
  return static_cast<long>(length);
}

// Hands out what is left of the bytes read to recognise the format, then reads the
// descriptor.
long read_plain(ByteSource& source, char* out, std::size_t capacity) {
  if (source.head_used < source.head_length) {
    const std::size_t n = std::min(capacity, source.head_length - source.head_used);
    std::memcpy(out, source.head + source.head_used, n);
    source.head_used += n;
    return static_cast<long>(n);
  }
  for (;;) {
    const ssize_t got = read(source.fd, out, capacity);
    if (got >= 0) return static_cast<long>(got);
    if (errno != EINTR) {
      source.error = std::strerror(errno);
      return -1;
    }
  }
}

}  // namespace

const char* format_name(TextFormat format) {
  switch (format) {
    case TextFormat::gzip:
      return "gzip";
    case TextFormat::bzip2:
      return "bzip2";
    case TextFormat::xz:
      return "xz";
    case TextFormat::zstd:
      return "zstd";
    case TextFormat::plain:
      break;
  }
  return "plain";
}

bool open_byte_source(int fd, ByteSource& source) {
  source = ByteSource{};
  source.fd = fd;
  ssize_t got = -1;
  do {
    got = pread(fd, source.head, sizeof source.head, 0);
  } while (got < 0 && errno == EINTR);
  if (got >= 0) {  // the descriptor has not moved: its bytes come again from the start
    source.head_length = static_cast<std::size_t>(got);
    source.head_used = source.head_length;
    return true;
  }
  if (errno != ESPIPE) {
    source.error = std::strerror(errno);
    return false;
  }
  got = read_fully(fd, source.head, sizeof source.head, source.error);
  if (got < 0) return false;
  source.head_length = static_cast<std::size_t>(got);
  return true;
}

long read_text(ByteSource& source, char* out, std::size_t capacity) {
  if (capacity == 0) return 0;
  return read_plain(source, out, capacity);
}

void close_byte_source(ByteSource& source) { source.decoder = nullptr; }
