#include "byte_source.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "decompress.h"

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
// descriptor: the plain text, or the compressed bytes that a decoder takes.
long read_input(ByteSource& source, char* out, std::size_t capacity) {
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

// Each format's name in messages, and the library that decodes it; in the order of TextFormat.
const struct {
  const char* name;
  const char* library;
} kFormatNames[] = {
    {"plain", nullptr}, {"gzip", "zlib"},    {"bzip2", "libbz2"},
    {"xz", "liblzma"},  {"zstd", "libzstd"},
};

// A compressed input being decoded.
struct Decoding {
  const Decoder* decoder = nullptr;
  void* state = nullptr;
  char input[kInputBlock];
  const unsigned char* next = nullptr;  // the input read and not yet decoded
  std::size_t left = 0;
  bool input_ended = false;
  bool between_streams = false;  // a stream has ended and nothing of a next one is decoded
  bool finished = false;         // the input ended between streams: the text is whole
};

// The decoder of `format` in this build, or nullptr.
const Decoder* decoder_of(TextFormat format) {
  switch (format) {
#ifdef WITH_ZLIB
    case TextFormat::gzip:
      return &kGzipDecoder;
#endif
#ifdef WITH_BZIP2
    case TextFormat::bzip2:
      return &kBzip2Decoder;
#endif
#ifdef WITH_LZMA
    case TextFormat::xz:
      return &kXzDecoder;
#endif
#ifdef WITH_ZSTD
    case TextFormat::zstd:
      return &kZstdDecoder;
#endif
    default:
      return nullptr;
  }
}

long fail(ByteSource& source, const std::string& reason) {
  source.error = reason;
  return -1;
}

bool start_decoding(ByteSource& source) {
  const std::string format = format_name(source.format);
  const Decoder* decoder = decoder_of(source.format);
  if (decoder == nullptr) {
    source.error =
        "cannot read " + format + " data: built without " + missing_library(source.format);
    return false;
  }
  auto* decoding = new (std::nothrow) Decoding;
  if (decoding != nullptr) decoding->state = std::calloc(1, decoder->state_size);
  if (decoding == nullptr || decoding->state == nullptr || !decoder->start(decoding->state)) {
    if (decoding != nullptr) std::free(decoding->state);
    delete decoding;
    source.error = no_memory_reason(format.c_str());
    return false;
  }
  decoding->decoder = decoder;
  source.decoder = decoding;
  return true;
}

// Fills `out` with decoded text from the streams of the input, one after another, until it is
// full or the input ends where a stream ends.
long read_compressed(ByteSource& source, char* out, std::size_t capacity) {
  if (source.decoder == nullptr && !start_decoding(source)) return -1;
  Decoding& d = *static_cast<Decoding*>(source.decoder);
  DecodeBuffers buffers = {d.next, d.left, out, capacity};
  while (buffers.out_left > 0 && !d.finished) {
    if (buffers.in_left == 0 && !d.input_ended) {
      const long got = read_input(source, d.input, sizeof d.input);
      if (got < 0) return -1;
      d.input_ended = got == 0;
      buffers.in = reinterpret_cast<const unsigned char*>(d.input);
      buffers.in_left = static_cast<std::size_t>(got);
    }
    if (d.between_streams && buffers.in_left == 0 && d.input_ended) {
      d.finished = true;
      break;
    }
    const std::size_t in_before = buffers.in_left, out_before = buffers.out_left;
    std::string reason;
    const DecodeStep step = d.decoder->step(d.state, buffers, d.input_ended, reason);
    const char* const format = format_name(source.format);
    if (step == DecodeStep::damaged) {
      return fail(source, std::string(format) + " data is damaged: " + reason);
    }
    if (step == DecodeStep::refused) return fail(source, reason);
    const bool progress = buffers.in_left != in_before || buffers.out_left != out_before;
    if (step == DecodeStep::stream_end) {
      d.between_streams = true;
    } else if (progress) {
      d.between_streams = false;
    } else if (d.input_ended || buffers.in_left > 0) {
      // Stuck inside a stream: the input ended (a decoder that has input at hand always takes
      // some, so this is the end too, and never a loop).
      return fail(source, std::string("unexpected end of ") + format + " data");
    }
  }
  d.next = buffers.in;
  d.left = buffers.in_left;
  return static_cast<long>(capacity - buffers.out_left);
}

bool has_bytes(const unsigned char* head, std::size_t length, std::size_t at, const char* bytes,
               std::size_t count) {
  return length >= at + count && std::memcmp(head + at, bytes, count) == 0;
}

}  // namespace

std::string over_limit_reason(const char* format, std::uint64_t needed) {
  const std::uint64_t mib = std::uint64_t{1} << 20;
  return std::string(format) + " data needs " + std::to_string((needed + mib - 1) / mib) +
         " MiB to decode, above the limit of " + std::to_string(kDecoderMemoryLimit / mib) + " MiB";
}

std::string no_memory_reason(const char* format) {
  return std::string("not enough memory to decode ") + format + " data";
}

const char* format_name(TextFormat format) {
  return kFormatNames[static_cast<std::size_t>(format)].name;
}

TextFormat recognise_format(const unsigned char* head, std::size_t length) {
  // gzip: the magic, the deflate method, and flags whose three reserved bits are clear.
  if (has_bytes(head, length, 0, "\x1f\x8b\x08", 3) && length >= 4 && (head[3] & 0xe0) == 0) {
    return TextFormat::gzip;
  }
  // bzip2: "BZh", the block size 1-9, then the magic of the first block or of the end of an
  // empty stream.
  if (has_bytes(head, length, 0, "BZh", 3) && length >= 4 && head[3] >= '1' && head[3] <= '9' &&
      (has_bytes(head, length, 4, "\x31\x41\x59\x26\x53\x59", 6) ||
       has_bytes(head, length, 4, "\x17\x72\x45\x38\x50\x90", 6))) {
    return TextFormat::bzip2;
  }
  if (has_bytes(head, length, 0, "\xfd\x37\x7a\x58\x5a\x00", 6)) return TextFormat::xz;
  // zstd: the magic of a frame, or that of a skippable frame (50-5f 2a 4d 18) and its 4-byte
  // length: pzstd begins every file with one, and the decoder steps over them.
  if (has_bytes(head, length, 0, "\x28\xb5\x2f\xfd", 4) ||
      (length >= 8 && (head[0] & 0xf0) == 0x50 && has_bytes(head, length, 1, "\x2a\x4d\x18", 3))) {
    return TextFormat::zstd;
  }
  return TextFormat::plain;
}

const char* missing_library(TextFormat format) {
  return decoder_of(format) == nullptr ? kFormatNames[static_cast<std::size_t>(format)].library
                                       : nullptr;
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
  } else if (errno != ESPIPE) {
    source.error = std::strerror(errno);
    return false;
  } else {
    got = read_fully(fd, source.head, sizeof source.head, source.error);
    if (got < 0) return false;
    source.head_length = static_cast<std::size_t>(got);
  }
  source.format = recognise_format(source.head, source.head_length);
  return true;
}

long read_text(ByteSource& source, char* out, std::size_t capacity) {
  if (capacity == 0) return 0;
  if (source.format != TextFormat::plain) return read_compressed(source, out, capacity);
  return read_input(source, out, capacity);
}

void close_byte_source(ByteSource& source) {
  auto* decoding = static_cast<Decoding*>(source.decoder);
  if (decoding != nullptr) {
    decoding->decoder->end(decoding->state);
    std::free(decoding->state);
    delete decoding;
  }
  source.decoder = nullptr;
}
