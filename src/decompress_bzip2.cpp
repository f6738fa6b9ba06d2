// bzip2 streams through libbz2.
#include <bzlib.h>

#include <new>

#include "decompress.h"

namespace {

void* create_bzip2() {
  auto* stream = new (std::nothrow) bz_stream{};
  if (stream != nullptr && BZ2_bzDecompressInit(stream, 0, 0) != BZ_OK) {
    delete stream;
    return nullptr;
  }
  return stream;
}

DecodeStep step_bzip2(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  bz_stream& stream = *static_cast<bz_stream*>(state);
  // The library reads its input through a non-const pointer but does not write it.
  stream.next_in = const_cast<char*>(reinterpret_cast<const char*>(buffers.in));
  stream.avail_in = as_uint(buffers.in_left);
  stream.next_out = buffers.out;
  stream.avail_out = as_uint(buffers.out_left);
  const unsigned in_before = stream.avail_in, out_before = stream.avail_out;
  const int status = BZ2_bzDecompress(&stream);
  advance(buffers, in_before - stream.avail_in, out_before - stream.avail_out);
  switch (status) {
    case BZ_OK:
      return DecodeStep::more;
    case BZ_STREAM_END:
      // A stream cannot be restarted: the next one gets a decoder of its own.
      BZ2_bzDecompressEnd(&stream);
      stream = bz_stream{};
      if (BZ2_bzDecompressInit(&stream, 0, 0) == BZ_OK) return DecodeStep::stream_end;
      reason = "out of memory";
      return DecodeStep::damaged;
    case BZ_DATA_ERROR:
      reason = "data integrity (CRC) error";
      return DecodeStep::damaged;
    case BZ_DATA_ERROR_MAGIC:
      reason = "not bzip2 data after the end of a stream";
      return DecodeStep::damaged;
    case BZ_MEM_ERROR:
      reason = "out of memory";
      return DecodeStep::damaged;
    default:
      reason = "invalid data";
      return DecodeStep::damaged;
  }
}

void destroy_bzip2(void* state) {
  auto* stream = static_cast<bz_stream*>(state);
  BZ2_bzDecompressEnd(stream);
  delete stream;
}

}  // namespace

const Decoder kBzip2Decoder = {create_bzip2, step_bzip2, destroy_bzip2};
