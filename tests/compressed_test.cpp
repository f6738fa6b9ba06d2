// Tests of compressed engine outputs: every format gives through the reader exactly what the
// plain text gives, whatever the block and stream boundaries; damaged and cut-off streams fail
// with a reason; texts that only resemble a compressed header stay plain. The texts are
// compressed here with the formats' libraries; a format whose library this build lacks skips.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "byte_source.h"
#include "log_reader.h"
#include "reference_line_reader.h"

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

using namespace std::string_literals;

// Compresses `pieces` as one stream; each piece but the last ends a compressed block, so the
// text on either side of a piece boundary is decoded from different blocks.
std::string compress(TextFormat format, const std::vector<std::string>& pieces) {
  std::string packed;
  char buffer[1 << 16];
  const auto last = [&](std::size_t i) { return i + 1 == pieces.size(); };
  switch (format) {
#ifdef WITH_ZLIB
    case TextFormat::gzip: {
      z_stream z{};
      deflateInit2(&z, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pieces[i].data()));
        z.avail_in = static_cast<uInt>(pieces[i].size());
        int status = Z_OK;
        do {
          z.next_out = reinterpret_cast<Bytef*>(buffer);
          z.avail_out = sizeof buffer;
          status = deflate(&z, last(i) ? Z_FINISH : Z_FULL_FLUSH);
          packed.append(buffer, sizeof buffer - z.avail_out);
        } while (z.avail_out == 0 || (last(i) && status != Z_STREAM_END));
      }
      deflateEnd(&z);
      break;
    }
#endif
#ifdef WITH_BZIP2
    case TextFormat::bzip2: {
      bz_stream b{};
      BZ2_bzCompressInit(&b, 1, 0, 0);
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        b.next_in = const_cast<char*>(pieces[i].data());
        b.avail_in = static_cast<unsigned>(pieces[i].size());
        int status = BZ_OK;
        do {
          b.next_out = buffer;
          b.avail_out = sizeof buffer;
          status = BZ2_bzCompress(&b, last(i) ? BZ_FINISH : BZ_FLUSH);
          packed.append(buffer, sizeof buffer - b.avail_out);
        } while (status != (last(i) ? BZ_STREAM_END : BZ_RUN_OK));
      }
      BZ2_bzCompressEnd(&b);
      break;
    }
#endif
#ifdef WITH_LZMA
    case TextFormat::xz: {
      lzma_stream x = LZMA_STREAM_INIT;
      if (lzma_easy_encoder(&x, 6, LZMA_CHECK_CRC64) != LZMA_OK) break;
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        x.next_in = reinterpret_cast<const std::uint8_t*>(pieces[i].data());
        x.avail_in = pieces[i].size();
        lzma_ret status = LZMA_OK;
        do {
          x.next_out = reinterpret_cast<std::uint8_t*>(buffer);
          x.avail_out = sizeof buffer;
          status = lzma_code(&x, last(i) ? LZMA_FINISH : LZMA_FULL_FLUSH);
          packed.append(buffer, sizeof buffer - x.avail_out);
        } while (status == LZMA_OK);
      }
      lzma_end(&x);
      break;
    }
#endif
#ifdef WITH_ZSTD
    case TextFormat::zstd: {
      ZSTD_CCtx* context = ZSTD_createCCtx();
      ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        ZSTD_inBuffer in = {pieces[i].data(), pieces[i].size(), 0};
        std::size_t remaining = 0;
        do {
          ZSTD_outBuffer out = {buffer, sizeof buffer, 0};
          remaining = ZSTD_compressStream2(context, &out, &in, last(i) ? ZSTD_e_end : ZSTD_e_flush);
          packed.append(buffer, out.pos);
        } while (remaining != 0);
      }
      ZSTD_freeCCtx(context);
      break;
    }
#endif
    default:
      break;
  }
  return packed;
}

// A file of this test's own, since ctest runs tests side by side.
std::string write_temp(const std::string& bytes, const std::string& suffix) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  // The process id too: another build may run the same test at the same time.
  std::string id = std::string(test.test_suite_name()) + "." + test.name() + "." +
                   std::to_string(getpid()) + suffix;
  std::replace(id.begin(), id.end(), '/', '_');  // the format in a parameterised test's name
  const std::string path = testing::TempDir() + id;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

LogScan scan_file(const std::string& path) {
  LogScanOptions options;
  options.count_entries = true;
  options.head_bytes = 40;
  options.tail_bytes = 40;
  LogScan scan;
  scan_log_file(path.c_str(), options, scan);
  return scan;
}

// What the reader takes from `bytes` written plainly, checked against the line reader.
LogScan plain_scan(const std::string& bytes) {
  const LogScan plain = scan_file(write_temp(bytes, ".log"));
  const std::vector<std::string> entries = line_reader_entries(bytes);
  EXPECT_EQ(plain.entry_count, entries.size());
  EXPECT_EQ(plain.energy_entry, reference_scan(entries).line);
  return plain;
}

void expect_same_scan(const LogScan& got, const LogScan& plain) {
  EXPECT_EQ(got.status, LogReadStatus::ok) << got.error;
  EXPECT_EQ(got.entry_count, plain.entry_count);
  EXPECT_EQ(got.marker_found, plain.marker_found);
  EXPECT_EQ(got.energy_entry, plain.energy_entry);
  EXPECT_EQ(got.head, plain.head);
  EXPECT_EQ(got.tail, plain.tail);
  EXPECT_EQ(got.text_size, plain.text_size);
}

const std::string kEnergy = " SCF Done:  E(X) =  -2.5  A.U.";

// The edge texts of the line store, and a long one of several compressed blocks.
std::vector<std::string> edge_texts() {
  const std::string x1023(1023, 'x');
  std::string long_text = "head\n";
  for (int i = 0; i < 12000; ++i) {
    long_text += " cycle " + std::to_string(i) + "  E= -2.4" + std::to_string(i % 97) + "\n";
    if (i == 7000) long_text += kEnergy + "\n";
  }
  return {
      "head\r\n" + kEnergy + "\r\ntail\r\n",                      // carriage returns stay
      "a\n" + kEnergy + "\0 SCF Done: E =  -1 \n"s + "b\0c\n"s,   // a text ends at its NUL
      x1023 + "\n" + kEnergy + "\n",                              // 1023: the newline alone
      x1023 + "x\n" + kEnergy + "\n",                             // 1024 characters
      "a\n" + std::string(1020, 'x') + kEnergy + "\n" + kEnergy,  // marker across the split
      "a\n" + kEnergy,                                            // no final newline
      "",                                                         // empty
      long_text,
  };
}

// Where to cut a text between blocks or streams: inside its first marker, or in its middle.
std::size_t cut_point(const std::string& text) {
  const std::size_t marker = text.find("SCF Done");
  return marker == std::string::npos ? text.size() / 2 : marker + 4;
}

// A few bytes that announce each format, and the format.
struct Header {
  TextFormat format;
  std::string bytes;
};
const Header kHeaders[] = {
    {TextFormat::gzip, "\x1f\x8b\x08\x00"s},
    {TextFormat::bzip2, "BZh91AY&SY"},
    {TextFormat::bzip2, "BZh1\x17\x72\x45\x38\x50\x90"},  // an empty stream
    {TextFormat::xz,
     "\xfd"
     "7zXZ\0"s},
    {TextFormat::zstd, "\x28\xb5\x2f\xfd"},
};

class CompressedLog : public testing::TestWithParam<TextFormat> {
 protected:
  // Without its library the format is refused with a message naming both; the test skips.
  void SetUp() override {
    const char* library = missing_library(GetParam());
    if (library == nullptr) return;
    const std::string name = format_name(GetParam());
    for (const Header& header : kHeaders) {
      if (header.format != GetParam()) continue;
      const LogScan scan = scan_file(write_temp(header.bytes + "junk\n", ".bin"));
      EXPECT_EQ(scan.status, LogReadStatus::read_failed);
      EXPECT_EQ(scan.error, "cannot read " + name + " data: built without " + library);
    }
    GTEST_SKIP() << name << " logs need " << library << ", absent when this build was configured";
  }
  std::string suffix() const { return std::string(".") + format_name(GetParam()); }
};

TEST_P(CompressedLog, GivesWhatThePlainTextGives) {
  for (const std::string& text : edge_texts()) {
    SCOPED_TRACE(text.substr(0, 40));
    const LogScan plain = plain_scan(text);
    const std::size_t cut = cut_point(text);
    const std::string first = text.substr(0, cut), second = text.substr(cut);
    const std::string variants[] = {
        compress(GetParam(), {text}),
        compress(GetParam(), {first, second}),  // a block ends inside the marker
        // concatenated streams, an empty one among them, the marker cut between two
        compress(GetParam(), {first}) + compress(GetParam(), {""}) + compress(GetParam(), {second}),
    };
    for (const std::string& packed : variants) {
      const LogScan scan = scan_file(write_temp(packed, suffix()));
      EXPECT_EQ(scan.format, GetParam());
      expect_same_scan(scan, plain);
    }
  }
}

TEST_P(CompressedLog, DamagedOrCutOffStreamFails) {
  const std::string packed = compress(GetParam(), {edge_texts().back()});
  const std::string name = format_name(GetParam());
  struct Fault {
    std::string bytes;
    std::string error_begins;
  };
  std::vector<Fault> faults;
  for (std::size_t at : {packed.size() / 2, packed.size() - 2}) {  // the data, the check
    std::string flipped = packed;
    flipped[at] = static_cast<char>(flipped[at] ^ 0x55);
    faults.push_back({flipped, name + " data is damaged: "});
  }
  for (std::size_t length : {std::size_t{20}, packed.size() / 2, packed.size() - 1}) {
    faults.push_back({packed.substr(0, length), "unexpected end of " + name + " data"});
  }
  faults.push_back({packed + "trailing text\n", name + " data is damaged: "});
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.error_begins + " " + std::to_string(fault.bytes.size()));
    const LogScan scan = scan_file(write_temp(fault.bytes, suffix()));
    EXPECT_EQ(scan.status, LogReadStatus::read_failed);
    EXPECT_EQ(scan.error.substr(0, fault.error_begins.size()), fault.error_begins);
    EXPECT_FALSE(scan.marker_found);
  }
}

// A pipe has no length and may deliver the header a few bytes at a time.
TEST_P(CompressedLog, ReadsAFifo) {
  const std::string text = edge_texts().back();
  const std::string packed = compress(GetParam(), {text});
  const std::string path = write_temp("", ".fifo");
  unlink(path.c_str());
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    const int fd = open(path.c_str(), O_WRONLY);
    bool written = fd >= 0;
    for (std::size_t at = 0; written && at < packed.size(); at += 7) {
      written = write(fd, packed.data() + at, std::min<std::size_t>(7, packed.size() - at)) > 0;
    }
    _exit(written && close(fd) == 0 ? 0 : 1);
  }
  const LogScan scan = scan_file(path);
  int status = -1;
  waitpid(writer, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(scan.format, GetParam());
  expect_same_scan(scan, plain_scan(text));
  unlink(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Formats, CompressedLog,
                         testing::Values(TextFormat::gzip, TextFormat::bzip2, TextFormat::xz,
                                         TextFormat::zstd),
                         [](const auto& info) { return format_name(info.param); });

// A format is recognised by its whole header; a text that only begins like one stays text.
TEST(TextFormat, RecognisedByTheWholeHeader) {
  std::vector<Header> cases(std::begin(kHeaders), std::end(kHeaders));
  for (const std::string& text : {
           "BZh\n"s + kEnergy + "\n" + kEnergy + "\n",
           "BZh9 header\n"s + kEnergy + "\n",
           "BZh91AY&S\n"s + kEnergy + "\n",         // the block magic cut short
           "BZh01AY&SY\n"s + kEnergy + "\n",        // no block size 0
           "\x1f\x8b hello\n"s + kEnergy + "\n",    // gzip's magic followed by text
           "\x1f\x8b\x08\xe0\n"s + kEnergy + "\n",  // reserved flags set
           "\xfd"
           "7zXZ \n"s +
               kEnergy + "\n",
           "\x28\xb5\x2f\n"s + kEnergy + "\n",
       }) {
    cases.push_back({TextFormat::plain, text});
  }
  for (const Header& c : cases) {
    SCOPED_TRACE(c.bytes.substr(0, 12));
    const auto* head = reinterpret_cast<const unsigned char*>(c.bytes.data());
    EXPECT_EQ(recognise_format(head, std::min<std::size_t>(16, c.bytes.size())), c.format);
    if (c.format != TextFormat::plain) continue;
    const LogScan scan = scan_file(write_temp(c.bytes, ".log"));
    EXPECT_EQ(scan.format, TextFormat::plain);
    EXPECT_TRUE(scan.marker_found);
    expect_same_scan(scan, plain_scan(c.bytes));
  }
}

}  // namespace
