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

// The format that the first `length` bytes of an input announce. A compressed format is
// recognised by its whole stream header (gzip: 1f 8b 08 and flags with no reserved bit; bzip2:
// "BZh", a digit 1-9, then the magic of a block or of the end of an empty stream; xz:
// fd 37 7a 58 5a 00; zstd: the frame magic 28 b5 2f fd, or a skippable frame's magic, any of
// 50-5f then 2a 4d 18, with its 4-byte length, as pzstd writes first); anything else, or fewer
// bytes than the header, is plain, so a text that merely begins with "BZh" or 1f 8b stays text.
//
//   "BZh91AY&SY..."  ->  bzip2;   "BZh9 SCF Done"  ->  plain;   "P*M\x18\4\0\0\0"  ->  zstd
TextFormat recognise_format(const unsigned char* head, std::size_t length);

// The library that decodes `format` when this build was configured without it ("zlib",
// "libbz2", "liblzma", "libzstd"), or nullptr when the build reads the format (plain always).
//
//   missing_library(TextFormat::gzip)  ->  nullptr in a build with zlib
const char* missing_library(TextFormat format);

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
  void* decoder = nullptr;  // the decompressor's state and input buffer, made at the first read
  std::string error;        // why the last read failed
};

// Reads the first bytes of `fd` (up to 16, fewer only at the end of the input) and recognises
// the format: with pread where the descriptor can seek, so that the descriptor is then read
// from its start in whole blocks. Returns false, with `source.error` set, if that read fails.
//
//   open_byte_source(open("mol.log.gz", O_RDONLY), source)  ->  true, source.format gzip
bool open_byte_source(int fd, ByteSource& source);

// Reads up to `capacity` bytes of text into `out`: the input's bytes, or the text its
// compressed streams hold, read one after the other as concatenated streams are. Returns the
// number of bytes, 0 at the end of the text, or -1 with `source.error` set: the system's
// reason for a failed read, or what is wrong with a compressed stream ("unexpected end of xz
// data", "gzip data is damaged: incorrect data check"), or the library a format needs when the
// build has none. After -1 the source is not read again.
//
//   read_text(source, block, sizeof block)  ->  65536, then ..., then 0
long read_text(ByteSource& source, char* out, std::size_t capacity);

// Frees the decoder. The descriptor stays open.
void close_byte_source(ByteSource& source);

#endif  // GET_INTER_ENER_BYTE_SOURCE_H
