// gzip members through zlib.
#define ZLIB_CONST
#include <zlib.h>

#include <new>

#include "decompress.h"

namespace {

void* create_gzip() {
  auto* stream = new (std::nothrow) z_stream{};
  // 16 + the largest window: a gzip header and trailer, and nothing else, around the data.
  if (stream != nullptr && inflateInit2(stream, 16 + MAX_WBITS) != Z_OK) {
    delete stream;
    return nullptr;
  }
  return stream;
}

DecodeStep step_gzip(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  z_stream& stream = *static_cast<z_stream*>(state);
  stream.next_in = buffers.in;
  stream.avail_in = as_uint(buffers.in_left);
  stream.next_out = reinterpret_cast<Bytef*>(buffers.out);
  stream.avail_out = as_uint(buffers.out_left);
  const uInt in_before = stream.avail_in, out_before = stream.avail_out;
  const int status = inflate(&stream, Z_NO_FLUSH);
  advance(buffers, in_before - stream.avail_in, out_before - stream.avail_out);
  switch (status) {
    case Z_OK:
    case Z_BUF_ERROR:  // no progress possible: more input is needed
      return DecodeStep::more;
    case Z_STREAM_END:
      inflateReset(&stream);
      return DecodeStep::stream_end;
    case Z_MEM_ERROR:
      reason = "out of memory";
      return DecodeStep::damaged;
    default:
      reason = stream.msg != nullptr ? stream.msg : "invalid data";
      return DecodeStep::damaged;
  }
}

void destroy_gzip(void* state) {
  auto* stream = static_cast<z_stream*>(state);
  inflateEnd(stream);
  delete stream;
}

}  // namespace

const Decoder kGzipDecoder = {create_gzip, step_gzip, destroy_gzip};
