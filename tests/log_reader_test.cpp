// Tests of the reader: its entry count and energy line on every path (in memory, backward, forward
// through a file or a pipe) against a plain line reader, every descriptor closed, and a file
// shorter than its stated size. real_outputs_test reads the real outputs.
#include "log_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <random>

#include "reference_line_reader.h"
#include "test_files.h"

namespace {

using namespace std::string_literals;

// Compares the counts (entries, entries with the marker) and the search with the reference line
// reader on `bytes`: in memory, and read from a file backward and forward with blocks of `block`
// bytes, keeping `ends` bytes of head and tail (the backward reading searches its tail first).
void expect_same_as_line_reader(const std::string& bytes, std::size_t block = 4096,
                                std::size_t ends = 100) {
  const std::vector<std::string> entries = line_reader_entries(bytes);
  const SpEnerResult expected = reference_scan(entries);
  const SpEnerResult got = scan_sp_ener(bytes, 1);
  const auto markers = static_cast<std::uint64_t>(  // entries the energy search could take
      std::count_if(entries.begin() + std::min<std::size_t>(1, entries.size()), entries.end(),
                    [](const std::string& e) { return e.find("SCF Done") != std::string::npos; }));
  EXPECT_EQ(count_log_entries(bytes), entries.size());
  EXPECT_EQ(got.status, expected.status);
  EXPECT_EQ(got.line, expected.line);
  EXPECT_EQ(got.hartree, expected.hartree);
  const std::string path = write_temp(bytes);
  for (const bool forward : {false, true}) {
    SCOPED_TRACE(forward ? "forward" : "backward");
    errno = EINTR;  // stale: only a failed call's errno may count
    const LogScan scan = scan_path(path, forward, block, ends);
    EXPECT_EQ(scan.status, LogReadStatus::ok);
    EXPECT_EQ(scan.marker_found, expected.status != SpEnerStatus::marker_not_found);
    EXPECT_EQ(scan.energy_entry, expected.line);
    EXPECT_EQ(scan.entry_count, forward ? entries.size() : 0u);
    EXPECT_EQ(scan.marker_count, forward ? markers : 0u);
    EXPECT_EQ(scan.head, bytes.substr(0, ends));
    EXPECT_EQ(scan.tail, bytes.substr(bytes.size() - std::min(bytes.size(), ends)));
    EXPECT_EQ(scan.text_size, bytes.size());
    EXPECT_TRUE(scan.whole_text || scan.marker_found);  // without a marker, all is read
  }
}

// The edge texts (whose results the recorded log_* runs pin), then texts assembled at random from
// markers, short energy lines, NULs, CRs, empty lines and runs around the 16- and 64-byte scan
// blocks and the 1023-character limit: markers fall across block and entry boundaries.
TEST(LogReader, AgreesWithALineReaderOnEdgeAndRandomTexts) {
  for (const std::string& text : edge_texts()) expect_same_as_line_reader(text);
  const std::string pieces[] = {" SCF Done:  E(RB3LYP) =  -693.25  A.U. after 9 cycles",
                                "SCF Done",
                                "SCF Do",
                                "ne: a b c",
                                "SCF done",
                                " SCF Done: E = 1",
                                "\0"s,
                                "\r\n",
                                "\n",
                                "\n\n",
                                " ",
                                "S"};
  const std::size_t runs[] = {1, 7, 15, 16, 17, 63, 64, 65, 1000, 1015, 1022, 1023, 1024, 2046};
  // Blocks around the pieces and the 1023-character entries put block boundaries everywhere.
  const std::size_t blocks[] = {1, 2, 7, 16, 64, 1022, 1023, 1024, 1025, 4096};
  // Heads and tails kept, from none to longer than most texts: the backward search starts in
  // the tail.
  const std::size_t ends[] = {0, 9, 100, 10000};
  const int descriptors = count_open_descriptors();
  std::mt19937 random(20261121);
  for (int text = 0; text < 3000; ++text) {
    std::string bytes;
    const int parts = 1 + static_cast<int>(random() % 12);
    for (int p = 0; p < parts; ++p) {
      if (random() % 3 == 0) {
        bytes.append(runs[random() % std::size(runs)], "xy\t"[random() % 3]);
      } else {
        bytes += pieces[random() % std::size(pieces)];
      }
    }
    const std::size_t block = blocks[random() % std::size(blocks)];
    SCOPED_TRACE(testing::Message() << "text " << text << ", blocks of " << block);
    expect_same_as_line_reader(bytes, block, ends[text % std::size(ends)]);
    if (HasFailure()) break;
  }
  EXPECT_EQ(count_open_descriptors(), descriptors);  // every file is closed
}

// A pipe has no length: its bytes are read to the end, with the same entries as from a file,
// whether it holds less than a format header or many blocks.
TEST(LogReader, ReadsAPipeWhole) {
  std::string bytes = "head\n SCF Done:  E(X) =  -7.25  A.U.\n";
  for (int i = 0; i < 20000; ++i) bytes += "tail line " + std::to_string(i) + "\n";
  const std::string shorter_than_a_header = "a\n\nb";
  for (const std::string& text : {bytes, shorter_than_a_header}) {
    for (const std::size_t chunk : {7, 4096}) {
      const LogScan scan = scan_through_fifo(text, chunk, 40);
      EXPECT_EQ(scan.status, LogReadStatus::ok) << scan.error;
      EXPECT_EQ(scan.entry_count, line_reader_entries(text).size());
      EXPECT_EQ(scan.energy_entry, reference_scan(line_reader_entries(text)).line);
      EXPECT_EQ(scan.tail, text.substr(text.size() - std::min<std::size_t>(text.size(), 40)));
    }
  }
}

// A file that holds less than the size it stated when opened (cut short by another process
// meanwhile, or a sysfs file): the backward reading meets the end early, drops what it read
// and reads the file forward from its start, whole: the entries and the energy line of what
// the file holds. Without a tail to keep, the end is met by the first window instead.
TEST(LogReader, AFileShorterThanItsSizeIsReadWholeForward) {
  std::string bytes = "head\n SCF Done:  E(X) =  -7.25  A.U.\n";
  bytes += std::string(10000, 'x') + "\n";
  const std::string path = write_temp(bytes);
  const int fd = open(path.c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  for (const std::uint64_t size_when_opened : {bytes.size() + 1, bytes.size() * 3}) {
    for (const std::size_t ends : {0, 40}) {
      SCOPED_TRACE(testing::Message() << size_when_opened << " bytes stated, ends " << ends);
      LogScanOptions options;
      options.block_bytes = 4096;
      options.count_entries = true;  // counted by the forward reading alone
      options.head_bytes = options.tail_bytes = ends;
      LogScan scan;
      scan_regular_file_backward(fd, size_when_opened, options, scan);
      EXPECT_EQ(scan.status, LogReadStatus::ok) << scan.error;
      EXPECT_TRUE(scan.whole_text);
      EXPECT_EQ(scan.text_size, bytes.size());
      EXPECT_EQ(scan.entry_count, line_reader_entries(bytes).size());
      EXPECT_EQ(scan.energy_entry, " SCF Done:  E(X) =  -7.25  A.U.");
      EXPECT_EQ(scan.head, bytes.substr(0, ends));
      EXPECT_EQ(scan.tail, bytes.substr(bytes.size() - ends));
    }
  }
  close(fd);
}

// Reading further back, block after block: whole lines before `end`, at most `bytes`; a run
// that reaches the file's start keeps its first line, a line longer than `bytes` is cut.
TEST(LogReader, LinesBeforeAnEnd) {
  const std::string path = write_temp("ab\ncd\nef\n");
  const struct {
    std::uint64_t end;
    std::size_t bytes;
    const char* text;
    std::uint64_t begin;
  } cases[] = {{9, 5, "ef\n", 6},         {6, 5, "cd\n", 3}, {6, 6, "ab\ncd\n", 0},
               {9, 9, "ab\ncd\nef\n", 0}, {9, 2, "f\n", 7},  {3, 5, "ab\n", 0}};
  for (const auto& c : cases) {
    std::string text;
    std::uint64_t begin = 99;
    EXPECT_EQ(read_lines_before(path.c_str(), c.end, c.bytes, text, begin), LogReadStatus::ok);
    EXPECT_EQ(text, c.text) << c.end << " " << c.bytes;
    EXPECT_EQ(begin, c.begin) << c.end << " " << c.bytes;
  }
  std::string text;
  std::uint64_t begin = 0;
  EXPECT_EQ(read_lines_before("no/such/file", 3, 5, text, begin), LogReadStatus::cannot_open);
  EXPECT_EQ(read_lines_before(path.c_str(), 20, 5, text, begin), LogReadStatus::read_failed);
}

}  // namespace
