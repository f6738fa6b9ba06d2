// The decoders behind read_text: one per compressed format, each a few plain functions over
// its library's state. The shared loop in byte_source.cpp feeds them the input in blocks of
// kInputBlock bytes, lets them write straight into the caller's buffer, starts the next
// stream where one ends, and turns their failures and a cut-off input into messages.
#ifndef GET_INTER_ENER_DECOMPRESS_H
#define GET_INTER_ENER_DECOMPRESS_H

#include <cstddef>
#include <string>

// Bytes of compressed input read from the descriptor at a time.
constexpr std::size_t kInputBlock = 128 * 1024;

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
};

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
  // hold. Sets `reason` ("incorrect data check") when it returns damaged.
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
