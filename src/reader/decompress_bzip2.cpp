// bzip2 streams through libbz2.
#include <bzlib.h>

#include "decompress.h"

namespace {

bool start_bzip2(void* state) {
  return BZ2_bzDecompressInit(static_cast<bz_stream*>(state), 0, 0) == BZ_OK;
}

void end_bzip2(void* state) { BZ2_bzDecompressEnd(static_cast<bz_stream*>(state)); }

DecodeStep step_bzip2(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  bz_stream& stream = *static_cast<bz_stream*>(state);
  // The library reads its input through a non-const pointer but does not write it.
  stream.next_in = const_cast<char*>(reinterpret_cast<const char*>(buffers.in));
  stream.avail_in = as_uint(buffers.in_left);
  stream.next_out = buffers.out;
  stream.avail_out = as_uint(buffers.out_left);
  const unsigned in_before = stream.avail_in, out_before = stream.avail_out;
  int status = BZ2_bzDecompress(&stream);
  advance(buffers, in_before - stream.avail_in, out_before - stream.avail_out);
  if (status == BZ_OK) return DecodeStep::more;
  if (status == BZ_STREAM_END) {
    // A stream cannot be restarted: the next one gets a decoder of its own.
    BZ2_bzDecompressEnd(&stream);
    stream = bz_stream{};
    status = BZ2_bzDecompressInit(&stream, 0, 0);
    if (status == BZ_OK) return DecodeStep::stream_end;
  }
  if (status == BZ_MEM_ERROR) {
    reason = no_memory_reason("bzip2");
    return DecodeStep::refused;
  }
  reason = status == BZ_DATA_ERROR         ? "data integrity (CRC) error"
           : status == BZ_DATA_ERROR_MAGIC ? "not bzip2 data after the end of a stream"
                                           : "invalid data";
  return DecodeStep::damaged;
}

}  // namespace

const Decoder kBzip2Decoder = {sizeof(bz_stream), start_bzip2, step_bzip2, end_bzip2};
