// Tests of the reader: its entry count and energy line on every path (in memory, backward, forward
// through a file or a pipe) against a plain line reader; and what the recorded runs cannot show:
// descriptors, the store released, what the lists keep. check_test reads the real outputs.
#include "log_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "driver.h"
#include "input_file.h"
#include "input_lists.h"
#include "reference_line_reader.h"
#include "test_files.h"

namespace {

using namespace std::string_literals;

int count_open_descriptors() {
  int open = 0;
  for (int fd = 0; fd < 1024; ++fd) open += fcntl(fd, F_GETFD) != -1;
  return open;
}

// Compares the count and the search with the reference line reader on `bytes`: in memory,
// and read from a file backward and forward with blocks of `block` bytes.
void expect_same_as_line_reader(const std::string& bytes, std::size_t block = 4096) {
  const std::vector<std::string> entries = line_reader_entries(bytes);
  const SpEnerResult expected = reference_scan(entries);
  const SpEnerResult got = scan_sp_ener(bytes, 1);
  EXPECT_EQ(count_log_entries(bytes), entries.size());
  EXPECT_EQ(got.status, expected.status);
  EXPECT_EQ(got.line, expected.line);
  EXPECT_EQ(got.hartree, expected.hartree);
  const std::string path = write_temp(bytes);
  for (const bool forward : {false, true}) {
    SCOPED_TRACE(forward ? "forward" : "backward");
    errno = EINTR;  // stale: only a failed call's errno may count
    const LogScan scan = scan_path(path, forward, block, 100);
    EXPECT_EQ(scan.status, LogReadStatus::ok);
    EXPECT_EQ(scan.marker_found, expected.status != SpEnerStatus::marker_not_found);
    EXPECT_EQ(scan.energy_entry, expected.line);
    EXPECT_EQ(scan.entry_count, forward ? entries.size() : 0u);
    EXPECT_EQ(scan.head, bytes.substr(0, 100));
    EXPECT_EQ(scan.tail, bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 100)));
    EXPECT_EQ(scan.text_size, bytes.size());
    EXPECT_TRUE(scan.whole_text || scan.marker_found);  // without a marker, all is read
  }
}

// The edge texts (whose results the recorded log_* runs pin), then texts assembled at random from
// markers, short energy lines, NULs, CRs, empty lines and runs around the 16- and 64-byte scan
// blocks and the 1023-character limit: markers fall across block and entry boundaries.
TEST(LineStore, AgreesWithALineReaderOnEdgeAndRandomTexts) {
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
    expect_same_as_line_reader(bytes, block);
    if (HasFailure()) break;
  }
  EXPECT_EQ(count_open_descriptors(), descriptors);  // every file is closed
}

// A pipe has no length: its bytes are read to the end, with the same entries as from a file,
// whether it holds less than a format header or many blocks.
TEST(LineStore, ReadsAPipeWhole) {
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

// A file cut short by another process after it was opened: the backward reading meets the
// end early and says so, instead of taking a wrong line or dying of a signal.
TEST(LineStore, AFileThatShrinksIsAReadFailure) {
  std::string bytes = "head\n SCF Done:  E(X) =  -7.25  A.U.\n";
  bytes += std::string(10000, 'x') + "\n";
  const std::string path = write_temp(bytes);
  const int fd = open(path.c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  LogScanOptions options;
  options.block_bytes = 4096;
  for (const std::uint64_t size_when_opened : {bytes.size() + 1, bytes.size() * 3}) {
    LogScan scan;
    scan_regular_file_backward(fd, size_when_opened, options, scan);
    EXPECT_EQ(scan.status, LogReadStatus::read_failed);
    EXPECT_EQ(scan.error, "the file became shorter while it was read");
    EXPECT_FALSE(scan.marker_found);
  }
  close(fd);
}

// A directory named as an input is refused as a missing file is, its descriptor closed.
TEST(InputFile, ADirectoryIsRefusedWithoutADescriptorLeft) {
  struct stat info;
  const int descriptors = count_open_descriptors();
  EXPECT_EQ(open_input_fd(testing::TempDir().c_str(), info), -1);
  EXPECT_EQ(open_input_fd("no/such/file", info), -1);
  EXPECT_EQ(count_open_descriptors(), descriptors);
}

// The lists hold what their counts say: one trimmed line per job, however many lines follow;
// each site's own number, minus 1, though it takes no part in the tables.
TEST(InputLists, HoldWhatTheirCountsSay) {
  std::FILE* batch = std::tmpfile();
  std::FILE* neighbors = std::tmpfile();
  ASSERT_TRUE(batch != nullptr && neighbors != nullptr);
  std::fputs("2\n a \nb\nc\n", batch);
  std::fputs("a\nb\n2\n7\n0\n-3\n0\n", neighbors);
  std::rewind(batch);
  std::rewind(neighbors);
  BatchList list;
  EXPECT_EQ(read_batch_list(batch, list), ListStatus::ok);
  EXPECT_EQ(list.job_lines, (std::vector<std::string>{"a", "b"}));
  NeighborTable table;
  ListFault fault;
  EXPECT_EQ(read_neighbor_list(neighbors, 2, table, fault), ListStatus::ok);
  EXPECT_EQ(table.root_mol_id, (std::vector<int>{6, -4}));
  std::fclose(batch);
  std::fclose(neighbors);
}

// The driver releases each output's store once its energy is taken, the last one too.
TEST(LineStore, TheBatchLeavesNoStoreBehind) {
  const std::string log =
      write_temp("head\n SCF Done:  E(X) =  -7.25  A.U.\n" + std::string(99, 'x'));
  std::FILE* batch = std::tmpfile();
  ASSERT_NE(batch, nullptr);
  std::fprintf(batch, "1\n%s %s %s\n", log.c_str(), log.c_str(), log.c_str());
  std::rewind(batch);
  EXPECT_EQ(read_batch_jobs(batch, "jobs", 1).U_nM.at(0), -7.25 * hartree_to_meV);
  std::fclose(batch);
  EXPECT_TRUE(g_log_data.energy_entry.empty() && g_log_data.tail.empty());
}

}  // namespace
