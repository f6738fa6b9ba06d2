// Reading an input's text forward, block by block: the bytes of its descriptor, or, when the
// input is a compressed stream, the text that the stream holds.
#ifndef GET_INTER_ENER_BYTE_SOURCE_H
#define GET_INTER_ENER_BYTE_SOURCE_H

#include <cstddef>
#include <string>

// What an input holds, recognised by the header of its first bytes, whatever its name.
enum class TextFormat { plain, gzip, bzip2, xz, zstd };

// The format's name in messages: "plain", "gzip", "bzip2", "xz", "zstd".
const char* format_name(TextFormat format);

// One input read forward. Plain bytes come straight from the descriptor; a compressed
// stream goes through its decoder.
struct ByteSource {
  int fd = -1;  // not owned: the caller closes it
  TextFormat format = TextFormat::plain;
  unsigned char head[16] = {};  // the first bytes, read to recognise the format
  std::size_t head_length = 0;
  // How many of them the descriptor's own bytes need not follow: all of them when they were
  // read with pread and the descriptor still stands at the start, else those handed out or
  // decoded so far.
  std::size_t head_used = 0;
  void* decoder = nullptr;  // the decompressor's state, if any
  std::string error;        // why the last read failed
};

// Reads the first bytes of `fd` and recognises the format: with pread where the descriptor
// can seek, so that a plain file is then read from its start in whole blocks. Returns false,
// with `source.error` set, if that read fails.
bool open_byte_source(int fd, ByteSource& source);

// Reads up to `capacity` bytes of text into `out`. Returns the number of bytes, 0 at the end
// of the text, or -1 with `source.error` set: the system's reason for a failed read, or what
// is wrong with a compressed stream ("unexpected end of gzip data").
long read_text(ByteSource& source, char* out, std::size_t capacity);

// Frees the decoder. The descriptor stays open.
void close_byte_source(ByteSource& source);

#endif  // GET_INTER_ENER_BYTE_SOURCE_H
