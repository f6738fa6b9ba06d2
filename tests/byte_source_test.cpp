// Compressed outputs: each format (compressed here by its library; one this build lacks skips)
// reads as its plain text across stream boundaries, fails with its reason when damaged or cut
// off, and ends each stream's decoder. What the tool prints, the compressed_* runs show.
#include "byte_source.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>

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

INSTANTIATE_TEST_SUITE_P(Formats, CompressedLog,
                         testing::Values(TextFormat::gzip, TextFormat::bzip2, TextFormat::xz,
                                         TextFormat::zstd),
                         [](const auto& info) { return format_name(info.param); });

}  // namespace
