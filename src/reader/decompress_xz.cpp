// xz streams through liblzma, which reads concatenated streams and their padding itself.
#include <lzma.h>

#include <cstdint>

#include "decompress.h"

namespace {

// A zeroed stream is the library's initial one. A stream that needs more than the limit
// stops with LZMA_MEMLIMIT_ERROR before its dictionary is allocated.
bool start_xz(void* state) {
  return lzma_stream_decoder(static_cast<lzma_stream*>(state), kDecoderMemoryLimit,
                             LZMA_CONCATENATED) == LZMA_OK;
}

void end_xz(void* state) { lzma_end(static_cast<lzma_stream*>(state)); }

const char* xz_reason(lzma_ret status) {
  switch (status) {
    case LZMA_DATA_ERROR:
      return "compressed data is corrupt";
    case LZMA_FORMAT_ERROR:
      return "not xz data after the end of a stream";
    case LZMA_OPTIONS_ERROR:
      return "unsupported compression options";
    default:
      return "invalid data";
  }
}

DecodeStep step_xz(void* state, DecodeBuffers& buffers, bool input_ended, std::string& reason) {
  lzma_stream& stream = *static_cast<lzma_stream*>(state);
  stream.next_in = buffers.in;
  stream.avail_in = buffers.in_left;
  stream.next_out = reinterpret_cast<std::uint8_t*>(buffers.out);
  stream.avail_out = buffers.out_left;
  // Only when told that the input has ended does the decoder check that the last stream is whole.
  const lzma_ret status = lzma_code(&stream, input_ended ? LZMA_FINISH : LZMA_RUN);
  advance(buffers, buffers.in_left - stream.avail_in, buffers.out_left - stream.avail_out);
  // LZMA_BUF_ERROR: no progress possible, the input is cut off or more is needed.
  if (status == LZMA_OK || status == LZMA_BUF_ERROR) return DecodeStep::more;
  if (status == LZMA_STREAM_END) return DecodeStep::stream_end;
  if (status == LZMA_MEMLIMIT_ERROR || status == LZMA_MEM_ERROR) {
    // lzma_memusage: what the stream needs, dictionary included.
    reason = status == LZMA_MEM_ERROR ? no_memory_reason("xz")
                                      : over_limit_reason("xz", lzma_memusage(&stream));
    return DecodeStep::refused;
  }
  reason = xz_reason(status);
  return DecodeStep::damaged;
}

}  // namespace

const Decoder kXzDecoder = {sizeof(lzma_stream), start_xz, step_xz, end_xz};
