// Compressed outputs: each format (compressed here by its library; one this build lacks skips)
// reads as its plain text across stream boundaries, fails with its reason when damaged or cut
// off, and ends each stream's decoder. What the tool prints, the compressed_* runs show.
#include "byte_source.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <fstream>

#include "log_reader.h"
#include "reference_line_reader.h"
#include "test_files.h"

#ifdef WITH_ZLIB
#include <zlib.h>
#endif
#ifdef WITH_BZIP2
#include <bzlib.h>
#endif
#ifdef WITH_LZMA
#include <lzma.h>
#endif
#ifdef WITH_ZSTD
#include <zstd.h>
#endif

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define UNDER_ADDRESS_SANITIZER
#endif
#endif

namespace {

// Compresses `text` as one stream, with the format's integrity check.
std::string compress(TextFormat format, const std::string& text) {
  std::string packed(text.size() + text.size() / 2 + 1024, '\0');
  std::size_t size = 0;
  switch (format) {
#ifdef WITH_ZLIB
    case TextFormat::gzip: {
      z_stream z{};
      deflateInit2(&z, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
      z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
      z.avail_in = static_cast<uInt>(text.size());
      z.next_out = reinterpret_cast<Bytef*>(packed.data());
      z.avail_out = static_cast<uInt>(packed.size());
      deflate(&z, Z_FINISH);
      size = z.total_out;
      deflateEnd(&z);
      break;
    }
#endif
#ifdef WITH_BZIP2
    case TextFormat::bzip2: {
      unsigned length = static_cast<unsigned>(packed.size());
      BZ2_bzBuffToBuffCompress(packed.data(), &length, const_cast<char*>(text.data()),
                               static_cast<unsigned>(text.size()), 1, 0, 0);
      size = length;
      break;
    }
#endif
#ifdef WITH_LZMA
    case TextFormat::xz:
      lzma_easy_buffer_encode(6, LZMA_CHECK_CRC64, nullptr,
                              reinterpret_cast<const std::uint8_t*>(text.data()), text.size(),
                              reinterpret_cast<std::uint8_t*>(packed.data()), &size, packed.size());
      break;
#endif
#ifdef WITH_ZSTD
    case TextFormat::zstd: {
      ZSTD_CCtx* context = ZSTD_createCCtx();
      ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
      size = ZSTD_compress2(context, packed.data(), packed.size(), text.data(), text.size());
      ZSTD_freeCCtx(context);
      break;
    }
#endif
    default:
      break;
  }
  packed.resize(size);
  return packed;
}

LogScan scan_file(const std::string& path) {
  return scan_path(path, true, LogScanOptions{}.block_bytes, 40);
}

// Checks that `got` is what the reader takes from `text` written plainly.
void expect_plain_scan(const LogScan& got, const std::string& text) {
  const LogScan plain = scan_file(write_temp(text, ".log"));
  EXPECT_EQ(got.status, LogReadStatus::ok) << got.error;
  EXPECT_EQ(got.entry_count, plain.entry_count);
  EXPECT_EQ(got.marker_found, plain.marker_found);
  EXPECT_EQ(got.energy_entry, plain.energy_entry);
  EXPECT_EQ(got.head, plain.head);
  EXPECT_EQ(got.tail, plain.tail);
  EXPECT_EQ(got.text_size, plain.text_size);
}

const std::string kEnergy = " SCF Done:  E(X) =  -2.5  A.U.";

// The store's edge texts, and a long one of several compressed blocks.
std::vector<std::string> compressed_texts() {
  std::vector<std::string> texts = edge_texts();
  std::string long_text = "head\n";
  for (int i = 0; i < 12000; ++i) {
    long_text += " cycle " + std::to_string(i) + "  E= -2.4" + std::to_string(i % 97) + "\n";
    if (i == 7000) long_text += kEnergy + "\n";
  }
  texts.push_back(long_text);
  return texts;
}

class CompressedLog : public testing::TestWithParam<TextFormat> {
 protected:
  // Without its library the format is refused, as the recorded runs compressed_without_*
  // show in such a build; here the tests skip.
  void SetUp() override {
    if (const char* library = missing_library(GetParam())) {
      GTEST_SKIP() << format_name(GetParam()) << " logs need " << library
                   << ", absent when this build was configured";
    }
  }
  std::string suffix() const { return std::string(".") + format_name(GetParam()); }
};

TEST_P(CompressedLog, GivesWhatThePlainTextGives) {
  for (const std::string& text : compressed_texts()) {
    SCOPED_TRACE(text.substr(0, 40));
    const std::size_t marker = text.find("SCF Done");  // cut inside it, or in the middle
    const std::size_t cut = marker == std::string::npos ? text.size() / 2 : marker + 4;
    const std::string first = text.substr(0, cut), second = text.substr(cut);
    const std::string variants[] = {
        compress(GetParam(), text),
        // concatenated streams, an empty one among them, the marker cut between two
        compress(GetParam(), first) + compress(GetParam(), "") + compress(GetParam(), second),
    };
    for (const std::string& packed : variants) {
      const LogScan scan = scan_file(write_temp(packed, suffix()));
      EXPECT_EQ(scan.format, GetParam());
      expect_plain_scan(scan, text);
    }
  }
}

TEST_P(CompressedLog, DamagedOrCutOffStreamFails) {
  const std::string packed = compress(GetParam(), compressed_texts().back());
  const std::string name = format_name(GetParam());
  std::vector<std::pair<std::string, std::string>> faults;  // the bytes, the message's beginning
  for (std::size_t at : {packed.size() / 2, packed.size() - 2}) {  // the data, the check
    std::string flipped = packed;
    flipped[at] = static_cast<char>(flipped[at] ^ 0x55);
    faults.push_back({flipped, name + " data is damaged: "});
  }
  for (std::size_t length : {std::size_t{20}, packed.size() / 2, packed.size() - 1}) {
    faults.push_back({packed.substr(0, length), "unexpected end of " + name + " data"});
  }
  const char* const not_a_stream[] = {
      "", "incorrect header check", "not bzip2 data after the end of a stream",
      "compressed data is corrupt", "unknown frame descriptor"};  // in the order of TextFormat
  faults.push_back({packed + "trailing text\n",
                    name + " data is damaged: " + not_a_stream[static_cast<int>(GetParam())]});
  for (const auto& [bytes, error_begins] : faults) {
    SCOPED_TRACE(error_begins + " " + std::to_string(bytes.size()));
    const LogScan scan = scan_file(write_temp(bytes, suffix()));
    EXPECT_EQ(scan.status, LogReadStatus::read_failed);
    EXPECT_EQ(scan.error.substr(0, error_begins.size()), error_begins);
    EXPECT_FALSE(scan.marker_found);
  }
}

// Each stream's decoder is ended before the next one starts: a hundred streams leave no
// memory in use behind them (a bzip2 decoder alone holds 400 KiB and more).
TEST_P(CompressedLog, StreamsLeaveNoMemoryBehind) {
  std::string packed;
  for (int i = 0; i < 100; ++i) packed += compress(GetParam(), "line " + std::to_string(i) + "\n");
  const std::string path = write_temp(packed, suffix());
  const auto in_use = [] {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
  };
  const std::size_t before = in_use();
  EXPECT_EQ(scan_file(path).entry_count, 100u);
  EXPECT_LT(in_use(), before + (1u << 20));
}

TEST_P(CompressedLog, ReadsAFifo) {
  const std::string text = compressed_texts().back();
  const LogScan scan = scan_through_fifo(compress(GetParam(), text), 7, 40);
  EXPECT_EQ(scan.format, GetParam());
  expect_plain_scan(scan, text);
}

// Each header as recognise_format takes it: a whole header names its format, a part of one or
// a look-alike is plain text.
TEST(RecogniseFormat, WholeHeadersOnly) {
  using namespace std::string_literals;
  const std::pair<std::string, TextFormat> cases[] = {
      {"\x1f\x8b\x08\x00"s, TextFormat::gzip},
      {"\x1f\x8b\x08\x20"s, TextFormat::plain},  // a reserved flag
      {"BZh91AY&SY", TextFormat::bzip2},
      {"BZh9 SCF Done", TextFormat::plain},
      {"\xfd\x37\x7a\x58\x5a\x00"s, TextFormat::xz},
      {"\xfd\x37\x7a\x58\x5a", TextFormat::plain},
      {"\x28\xb5\x2f\xfd", TextFormat::zstd},
      {"\x28\xb5\x2f", TextFormat::plain},
      {"\x50\x2a\x4d\x18\x04\x00\x00\x00"s, TextFormat::zstd},  // skippable, as pzstd's
      {"\x5f\x2a\x4d\x18\x00\x00\x00\x00"s, TextFormat::zstd},  // the last skippable magic
      {"\x50\x2a\x4d\x18\x04\x00\x00"s, TextFormat::plain},     // its length cut short
      {"\x60\x2a\x4d\x18\x04\x00\x00\x00"s, TextFormat::plain},
      {"\x4f\x2a\x4d\x18\x04\x00\x00\x00"s, TextFormat::plain},
      {"P*M SCF Done", TextFormat::plain},
  };
  for (const auto& [head, format] : cases) {
    EXPECT_EQ(recognise_format(reinterpret_cast<const unsigned char*>(head.data()), head.size()),
              format)
        << testing::PrintToString(head);
  }
}

// A skippable frame: magic 0x184d2a5N and the length of `content`, little-endian, then it.
std::string skippable_frame(unsigned char low_byte, const std::string& content) {
  std::string frame = {static_cast<char>(low_byte), '\x2a', '\x4d', '\x18'};
  for (int shift = 0; shift < 32; shift += 8) frame += static_cast<char>(content.size() >> shift);
  return frame + content;
}

// Skippable frames before, between and after zstd frames (one longer than the 128 KiB input
// block, one holding an energy line) are stepped over: the text is the frames' alone. A file
// of a skippable frame alone is an empty text; one cut off inside a skippable frame is cut off.
TEST(ZstdLog, SkippableFramesAreSteppedOver) {
  if (missing_library(TextFormat::zstd) != nullptr) GTEST_SKIP() << "built without libzstd";
  const std::string text = compressed_texts().back();
  const std::string first = compress(TextFormat::zstd, text.substr(0, text.size() / 3));
  const std::string second = compress(TextFormat::zstd, text.substr(text.size() / 3));
  const std::string large(200 * 1024, 'S');
  const std::string packed = skippable_frame(0x50, "1234") + first + skippable_frame(0x5a, large) +
                             second + skippable_frame(0x5f, "");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {packed, text},
      {packed + skippable_frame(0x51, "\n" + kEnergy + "\n"), text},
      {skippable_frame(0x50, "1234"), ""},
  };
  for (const auto& [bytes, plain] : cases) {
    const LogScan scan = scan_file(write_temp(bytes, ".zst"));
    EXPECT_EQ(scan.format, TextFormat::zstd);
    expect_plain_scan(scan, plain);
  }
  expect_plain_scan(scan_through_fifo(packed, 7, 40), text);
  const std::size_t inside_large = 8 + 4 + first.size() + 100 * 1024;
  const LogScan cut = scan_file(write_temp(packed.substr(0, inside_large), ".zst"));
  EXPECT_EQ(cut.error, "unexpected end of zstd data");
}

#if defined(WITH_LZMA) && defined(WITH_ZSTD)
// An xz stream of `text` whose block declares the LZMA2 dictionary `dictionary`, a byte as the
// format codes it: (2 or 3) << (11 + byte / 2). The data decode with any larger dictionary.
std::string xz_declaring(unsigned char dictionary, const std::string& text) {
  std::string xz = compress(TextFormat::xz, text);
  const std::size_t header = 12, size = (static_cast<unsigned char>(xz[header]) + 1) * 4u;
  xz[xz.find("\x21\x01", header) + 2] = static_cast<char>(dictionary);  // LZMA2, 1 byte
  const std::uint32_t check =
      lzma_crc32(reinterpret_cast<const std::uint8_t*>(xz.data()) + header, size - 4, 0);
  for (int i = 0; i < 4; ++i) xz[header + size - 4 + i] = static_cast<char>(check >> (8 * i));
  return xz;
}

// A zstd frame of `text` in one raw block, after the magic and the frame header `header`.
std::string zstd_declaring(const std::string& header, const std::string& text) {
  const std::size_t block = text.size() << 3 | 1;  // the last block, raw
  return "\x28\xb5\x2f\xfd" + header + static_cast<char>(block) + static_cast<char>(block >> 8) +
         static_cast<char>(block >> 16) + text;
}

// Streams that declare more than the decoders may take are refused before the memory is
// allocated, naming what they need (xz: the dictionary and the decoder's state; zstd: the
// window, or a single segment's content size); those within the limit read as their text. A
// zstd header cut across reads, through a FIFO or at the end of an input block, counts whole.
TEST(DecoderMemory, StreamsAboveTheLimitAreRefused) {
  using namespace std::string_literals;
  const std::string text = "head\n" + kEnergy + "\ntail\n";
  const auto needs = [](const char* format, int mib) {
    return std::string(format) + " data needs " + std::to_string(mib) +
           " MiB to decode, above the limit of 256 MiB";
  };
  const std::string two_gib = zstd_declaring("\x00\xa8"s, text);
  const std::pair<std::string, std::string> cases[] = {
      // the bytes, the error or ""
      {xz_declaring(37, text), needs("xz", 1537)},                          // 1536 MiB
      {xz_declaring(32, text), needs("xz", 257)},                           // 256 MiB and the state
      {xz_declaring(31, text), ""},                                         // 192 MiB
      {two_gib, needs("zstd", 2048)},                                       // 2^31
      {zstd_declaring("\x00\x91"s, text), needs("zstd", 288)},              // 2^28 and an eighth
      {zstd_declaring("\x00\x90"s, text), ""},                              // 2^28
      {zstd_declaring("\xa0\x00\x00\xc0\x12"s, text), needs("zstd", 300)},  // one segment
      {zstd_declaring("\xe0\x00\x00\x00\x40\x00\x00\x00\x00"s, text), needs("zstd", 1024)},
      {skippable_frame(0x50, std::string(128 * 1024 - 8 - 3, 'S')) + two_gib, needs("zstd", 2048)},
  };
  for (const auto& [bytes, error] : cases) {
    SCOPED_TRACE(error);
    const LogScan scan = scan_file(write_temp(bytes, ".z"));
    if (error.empty()) {
      expect_plain_scan(scan, text);
    } else {
      EXPECT_EQ(scan.status, LogReadStatus::read_failed);
      EXPECT_EQ(scan.error, error);
    }
  }
  EXPECT_EQ(scan_through_fifo(two_gib, 1, 40, true).error, needs("zstd", 2048));
}

// A zstd frame whose header declares a content size other than what its blocks hold is
// damaged, even when its last block is empty, which libzstd lets by when the reader's buffer
// is smaller than the declared content (1 MiB here).
TEST(DecoderMemory, AZstdFrameHoldsWhatItDeclares) {
  using namespace std::string_literals;
  const std::string text = "head\n" + kEnergy + "\ntail\n";
  const std::pair<std::string, std::string> cases[] = {
      {zstd_declaring("\xa0\x00\x00\x10\x00"s, ""), "a frame declares 1048576 bytes and holds 0"},
      {zstd_declaring("\x80\x50\x00\x00\x10\x00"s, ""),
       "a frame declares 1048576 bytes and holds 0"},
      {zstd_declaring("\x80\x50\x00\x00\x10\x00"s, text), "data corruption detected"},
      {zstd_declaring("\x20\x03"s, text), "data corruption detected"},
  };
  for (const auto& [bytes, error] : cases) {
    const LogScan scan = scan_file(write_temp(bytes, ".zst"));
    EXPECT_EQ(scan.error, "zstd data is damaged: " + error);
  }
}

// A dictionary or window within the limit that the system will not give (an address-space
// limit leaves 64 MiB) is not enough memory. Not under AddressSanitizer, which reserves far
// more address space than any such limit allows.
TEST(DecoderMemory, AnAllocationThatFailsIsNotEnoughMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(UNDER_ADDRESS_SANITIZER)
  GTEST_SKIP() << "AddressSanitizer needs the address space that the test limits";
#endif
  using namespace std::string_literals;
  const std::string text = "head\n" + kEnergy + "\ntail\n";
  const std::pair<std::string, std::string> cases[] = {
      {xz_declaring(31, text), "not enough memory to decode xz data"},               // 192 MiB
      {zstd_declaring("\x00\x90"s, text), "not enough memory to decode zstd data"},  // 256 MiB
  };
  for (const auto& [bytes, error] : cases) {
    const std::string path = write_temp(bytes, ".z");
    const pid_t child = fork();
    if (child == 0) {
      std::size_t pages = 0;
      std::ifstream("/proc/self/statm") >> pages;  // the address space in use, in pages
      const rlim_t room = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (64 << 20);
      const rlimit limit = {room, room};
      _exit(setrlimit(RLIMIT_AS, &limit) == 0 && scan_file(path).error == error ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << error;
  }
}
#endif

INSTANTIATE_TEST_SUITE_P(Formats, CompressedLog,
                         testing::Values(TextFormat::gzip, TextFormat::bzip2, TextFormat::xz,
                                         TextFormat::zstd),
                         [](const auto& info) { return format_name(info.param); });

}  // namespace
