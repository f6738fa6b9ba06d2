// zstd frames through libzstd, which starts the next frame by itself where one ends and steps
// over skippable frames (those pzstd writes first) wherever they stand.
#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "decompress.h"

namespace {

// The longest frame header: magic 4, descriptor 1, window 1, dictionary id 4, content size 8.
constexpr std::size_t kFrameHeaderMax = 18;

// The library's state, the first bytes of the frame being decoded (to tell what window it
// declares when the library refuses it, and what content size) and the bytes it has decoded
// to so far. libzstd returns 0 exactly where a frame ends, so the bytes taken after that begin
// the next frame.
struct ZstdState {
  ZSTD_DStream* stream;
  unsigned char header[kFrameHeaderMax];
  std::size_t header_length;
  std::uint64_t decoded;
};

ZstdState& state_of(void* state) { return *static_cast<ZstdState*>(state); }

// The largest window accepted, as a power of two: the limit.
constexpr int kWindowLogMax = 28;
static_assert(std::uint64_t{1} << kWindowLogMax == kDecoderMemoryLimit);

// A window above the limit is refused when the frame header is read, before it is allocated.
bool start_zstd(void* state) {
  ZSTD_DStream*& stream = state_of(state).stream;
  stream = ZSTD_createDStream();
  if (stream != nullptr &&
      ZSTD_isError(ZSTD_DCtx_setParameter(stream, ZSTD_d_windowLogMax, kWindowLogMax))) {
    ZSTD_freeDStream(stream);
    stream = nullptr;
  }
  return stream != nullptr;
}

void end_zstd(void* state) { ZSTD_freeDStream(state_of(state).stream); }

// The window that the frame header at the start of `header` declares: 2^(10 + exponent) plus
// eighths of it, or for a single-segment frame its content size. 0 when `header` holds no
// whole frame header.
//
//   28 b5 2f fd 00 a8  ->  2 GiB
std::uint64_t declared_window(const unsigned char* header, std::size_t length) {
  if (length < 6 || std::memcmp(header, "\x28\xb5\x2f\xfd", 4) != 0) return 0;
  const unsigned descriptor = header[4];
  if ((descriptor & 0x20) == 0) {
    const std::uint64_t base = std::uint64_t{1} << (10 + (header[5] >> 3));
    return base + base / 8 * (header[5] & 7);
  }
  // Single segment: the content size follows the dictionary id; its 2-byte form counts from 256.
  const std::size_t id_bytes[] = {0, 1, 2, 4}, size_bytes[] = {1, 2, 4, 8};
  const std::size_t at = 5 + id_bytes[descriptor & 3], bytes = size_bytes[descriptor >> 6];
  if (length < at + bytes) return 0;
  std::uint64_t size = 0;
  for (std::size_t i = bytes; i-- > 0;) size = size << 8 | header[at + i];
  return bytes == 2 ? size + 256 : size;
}

DecodeStep step_zstd(void* state, DecodeBuffers& buffers, bool, std::string& reason) {
  ZstdState& zstd = state_of(state);
  ZSTD_inBuffer in = {buffers.in, buffers.in_left, 0};
  ZSTD_outBuffer out = {buffers.out, buffers.out_left, 0};
  const std::size_t status = ZSTD_decompressStream(zstd.stream, &out, &in);
  const std::size_t kept = std::min(in.pos, kFrameHeaderMax - zstd.header_length);
  std::memcpy(zstd.header + zstd.header_length, buffers.in, kept);
  zstd.header_length += kept;
  if (ZSTD_isError(status)) {
    if (ZSTD_getErrorCode(status) == ZSTD_error_memory_allocation) {
      reason = no_memory_reason("zstd");
      return DecodeStep::refused;
    }
    if (ZSTD_getErrorCode(status) == ZSTD_error_frameParameter_windowTooLarge) {
      // The header: its bytes taken before, then those the library read but did not take.
      unsigned char header[kFrameHeaderMax];
      const std::size_t rest =
          std::min(buffers.in_left - in.pos, sizeof header - zstd.header_length);
      std::memcpy(header, zstd.header, zstd.header_length);
      std::memcpy(header + zstd.header_length, buffers.in + in.pos, rest);
      if (const std::uint64_t window = declared_window(header, zstd.header_length + rest)) {
        reason = over_limit_reason("zstd", window);
        return DecodeStep::refused;
      }
    }
    // The library's sentence, lower-cased to read as the end of ours.
    reason = ZSTD_getErrorName(status);
    if (!reason.empty()) reason[0] = static_cast<char>(std::tolower(reason[0]));
    return DecodeStep::damaged;
  }
  advance(buffers, in.pos, out.pos);
  zstd.decoded += out.pos;
  if (status != 0) return DecodeStep::more;
  // 0: a frame is decoded and every byte of it handed out; the next bytes begin another. The
  // library compares the frame's declared content size with what it decoded only when the
  // caller's buffer holds the whole content, so the comparison is made here, for every size.
  const unsigned long long declared = ZSTD_getFrameContentSize(zstd.header, zstd.header_length);
  const std::uint64_t decoded = zstd.decoded;
  zstd.header_length = 0;
  zstd.decoded = 0;
  if (declared != ZSTD_CONTENTSIZE_UNKNOWN && declared != ZSTD_CONTENTSIZE_ERROR &&
      declared != decoded) {
    reason = "a frame declares " + std::to_string(declared) + " bytes and holds " +
             std::to_string(decoded);
    return DecodeStep::damaged;
  }
  return DecodeStep::stream_end;
}

}  // namespace

const Decoder kZstdDecoder = {sizeof(ZstdState), start_zstd, step_zstd, end_zstd};
