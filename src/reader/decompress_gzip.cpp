// gzip members through zlib.
#define ZLIB_CONST
#include <zlib.h>

#include "decompress.h"

namespace {

// 16 + the largest window: a gzip header and trailer, and nothing else, around the data.
bool start_gzip(void* state) {
  return inflateInit2(static_cast<z_stream*>(state), 16 + MAX_WBITS) == Z_OK;
}

void end_gzip(void* state) { inflateEnd(static_cast<z_stream*>(state)); }

DecodeStep step_gzip(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  z_stream& stream = *static_cast<z_stream*>(state);
  stream.next_in = buffers.in;
  stream.avail_in = as_uint(buffers.in_left);
  stream.next_out = reinterpret_cast<Bytef*>(buffers.out);
  stream.avail_out = as_uint(buffers.out_left);
  const uInt in_before = stream.avail_in, out_before = stream.avail_out;
  const int status = inflate(&stream, Z_NO_FLUSH);
  advance(buffers, in_before - stream.avail_in, out_before - stream.avail_out);
  // Z_BUF_ERROR: no progress possible, more input is needed.
  if (status == Z_OK || status == Z_BUF_ERROR) return DecodeStep::more;
  if (status == Z_STREAM_END) {
    inflateReset(&stream);
    return DecodeStep::stream_end;
  }
  if (status == Z_MEM_ERROR) {
    reason = no_memory_reason("gzip");
    return DecodeStep::refused;
  }
  reason = stream.msg != nullptr ? stream.msg : "invalid data";
  return DecodeStep::damaged;
}

}  // namespace

const Decoder kGzipDecoder = {sizeof(z_stream), start_gzip, step_gzip, end_gzip};
