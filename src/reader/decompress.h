// The decoders behind read_text: one per compressed format, each a few plain functions over
// its library's state. The shared loop in byte_source.cpp feeds them the input in blocks of
// kInputBlock bytes, lets them write straight into the caller's buffer, starts the next
// stream where one ends, and turns their failures and a cut-off input into messages.
#ifndef GET_INTER_ENER_DECOMPRESS_H
#define GET_INTER_ENER_DECOMPRESS_H

#include <cstddef>
#include <cstdint>
#include <string>

// Bytes of compressed input read from the descriptor at a time.
constexpr std::size_t kInputBlock = 128 * 1024;

// The most memory the xz decoder may take for a stream (its dictionary and state, as liblzma
// counts them), and the largest window the zstd decoder accepts: 256 MiB. Many runs share a
// cluster node; the formats' usual settings fit (xz -9 needs 65 MiB, zstd --long 128 MiB),
// and a stream that declares more (xz with a 1 GiB dictionary, zstd --long=31 with 2 GiB) is
// refused before the decoder allocates it. gzip and bzip2 never need more than 4 MiB.
constexpr std::uint64_t kDecoderMemoryLimit = std::uint64_t{256} << 20;

// What one decoding step works on; the step advances both sides by what it used and wrote.
struct DecodeBuffers {
  const unsigned char* in;
  std::size_t in_left;
  char* out;
  std::size_t out_left;
};

enum class DecodeStep {
  more,        // went as far as the buffers allow; the stream is not over
  stream_end,  // a stream (gzip member, bzip2 stream, zstd frame) ended; the decoder is ready
               // for the next one
  damaged,     // the data cannot be decoded: the reason is set
  refused,     // the data need more memory than the decoder may take or can get: the reason
               // is the whole message, over_limit_reason's or no_memory_reason's
};

// Why a stream of `format` that needs `needed` bytes to decode, above kDecoderMemoryLimit, is
// refused; the bytes are rounded up to whole MiB.
//
//   over_limit_reason("xz", 1537 << 20)  ->  "xz data needs 1537 MiB to decode, above the limit
//   of 256 MiB"
std::string over_limit_reason(const char* format, std::uint64_t needed);

// Why a stream of `format` is refused when its decoder's memory cannot be allocated.
//
//   no_memory_reason("xz")  ->  "not enough memory to decode xz data"
std::string no_memory_reason(const char* format);

// Records that a step used `used` bytes of the input and wrote `written` bytes of text.
inline void advance(DecodeBuffers& buffers, std::size_t used, std::size_t written) {
  buffers.in += used;
  buffers.in_left -= used;
  buffers.out += written;
  buffers.out_left -= written;
}

// A buffer length as the 32-bit counts of the older libraries take it: at most 4 GiB - 1.
//
//   as_uint(std::size_t{1} << 40)  ->  4294967295
inline unsigned int as_uint(std::size_t length) {
  return length > 0xffffffffu ? 0xffffffffu : static_cast<unsigned int>(length);
}

// One format's decoder. Its state is a block of `state_size` bytes that the caller allocates
// zeroed (the library's stream structure, or a pointer to the library's own state) and frees.
struct Decoder {
  std::size_t state_size;
  // Starts the decoder in the zeroed state; false when memory runs out.
  bool (*start)(void* state);
  // Decodes what `buffers` allow. `input_ended` says that no input follows what `buffers`
  // hold. Sets `reason` ("incorrect data check") when it returns damaged or refused.
  DecodeStep (*step)(void* state, DecodeBuffers& buffers, bool input_ended, std::string& reason);
  // Frees what start and step allocated.
  void (*end)(void* state);
};

// The decoders of the formats whose library this build has (WITH_ZLIB, WITH_BZIP2, WITH_LZMA,
// WITH_ZSTD); each is defined in its own file, built only with its library.
extern const Decoder kGzipDecoder;
extern const Decoder kBzip2Decoder;
extern const Decoder kXzDecoder;
extern const Decoder kZstdDecoder;

#endif  // GET_INTER_ENER_DECOMPRESS_H
