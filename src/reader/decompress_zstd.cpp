// zstd frames through libzstd, which starts the next frame by itself where one ends and steps
// over skippable frames (those pzstd writes first) wherever they stand.
#include <zstd.h>

#include <cctype>

#include "decompress.h"

namespace {

// The state holds a pointer to the library's own.
ZSTD_DStream*& stream_of(void* state) { return *static_cast<ZSTD_DStream**>(state); }

bool start_zstd(void* state) { return (stream_of(state) = ZSTD_createDStream()) != nullptr; }

void end_zstd(void* state) { ZSTD_freeDStream(stream_of(state)); }

DecodeStep step_zstd(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  ZSTD_inBuffer in = {buffers.in, buffers.in_left, 0};
  ZSTD_outBuffer out = {buffers.out, buffers.out_left, 0};
  const std::size_t status = ZSTD_decompressStream(stream_of(state), &out, &in);
  advance(buffers, in.pos, out.pos);
  if (ZSTD_isError(status)) {
    // The library's sentence, lower-cased to read as the end of ours.
    reason = ZSTD_getErrorName(status);
    if (!reason.empty()) reason[0] = static_cast<char>(std::tolower(reason[0]));
    return DecodeStep::damaged;
  }
  // 0: a frame is decoded and every byte of it handed out.
  return status == 0 ? DecodeStep::stream_end : DecodeStep::more;
}

}  // namespace

const Decoder kZstdDecoder = {sizeof(ZSTD_DStream*), start_zstd, step_zstd, end_zstd};
