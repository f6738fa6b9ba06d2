// Decodes output files through the reader's byte source into one 64 KiB block and counts their
// newlines, keeping nothing else: the cost of decompression in the tool, without the store.
//
//   decode_text FILE...
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "byte_source.h"

int main(int argc, char** argv) {
  static char block[1 << 16];
  unsigned long long bytes = 0, newlines = 0;
  for (int i = 1; i < argc; ++i) {
    const int fd = open(argv[i], O_RDONLY);
    ByteSource source;
    if (fd < 0 || !open_byte_source(fd, source)) {
      std::perror(argv[i]);
      return 1;
    }
    long got = 0;
    while ((got = read_text(source, block, sizeof block)) > 0) {
      bytes += static_cast<unsigned long long>(got);
      for (const char* p = block; (p = static_cast<const char*>(std::memchr(
                                       p, '\n', static_cast<std::size_t>(block + got - p))));
           ++p) {
        ++newlines;
      }
    }
    close_byte_source(source);
    close(fd);
    if (got < 0) {
      std::fprintf(stderr, "%s: %s\n", argv[i], source.error.c_str());
      return 1;
    }
  }
  std::printf("%llu bytes, %llu newlines\n", bytes, newlines);
  return 0;
}
