// Tests of the line store and the energy extraction. The recorded black-box runs in
// tests/cli/ cover the reader's messages and its rules on small files.
#include "log_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

using Entries = std::vector<std::string>;

// Writes `bytes` to a file of this test's own, since ctest runs tests side by side.
std::string write_temp(const std::string& bytes) {
  const std::string path =
      testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".log";
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

Entries stored_entries(const std::string& path) {
  LogStore store;
  EXPECT_TRUE(read_log_store(path.c_str(), store));
  Entries entries;
  for (std::size_t i = 0; i < store.entry_start.size(); ++i)
    entries.emplace_back(log_entry(store, i));
  return entries;
}

// The entries as a line reader with a 1024-byte buffer sees them: read a piece, measure its
// text, and drop a newline found from its end backwards, never at position 0.
Entries line_reader_entries(const std::string& path) {
  Entries entries;
  std::FILE* file = std::fopen(path.c_str(), "r");
  for (char buffer[1024]; std::fgets(buffer, sizeof buffer, file) != nullptr;) {
    for (std::size_t i = std::strlen(buffer); i-- > 1;) {
      if (buffer[i] == '\n') {
        buffer[i] = '\0';
        break;
      }
    }
    entries.emplace_back(buffer);
  }
  std::fclose(file);
  return entries;
}

TEST(LineStore, EntriesAreLineReadsOfAtMost1023Characters) {
  const std::string x1023(1023, 'x');
  const std::pair<std::string, Entries> cases[] = {
      {"", {}},
      {"a\n\nb", {"a", "\n", "b"}},  // an empty line keeps its newline; no final newline
      {" a\t\r\n", {" a\t\r"}},
      {std::string(1500, 'x') + "\n", {x1023, std::string(477, 'x')}},
      {x1023 + "\n", {x1023, "\n"}},
      {x1023 + x1023, {x1023, x1023}},
      {std::string("ab\0cd\nef\n\0\n", 11), {"ab", "ef", ""}},  // text ends at its first NUL
  };
  for (const auto& [bytes, expected] : cases) {
    EXPECT_EQ(stored_entries(write_temp(bytes)), expected) << bytes.substr(0, 40);
  }
}

TEST(LineStore, AgreesWithALineReaderOnMixedLengths) {
  std::string bytes;
  for (int length = 0; length < 3100; length += 97) {
    bytes += std::string(length, 'a' + length % 26) + (length % 3 == 0 ? "\r\n" : "\n");
    if (length % 5 == 0) bytes += '\0';
  }
  const std::string path = write_temp(bytes);
  EXPECT_EQ(stored_entries(path), line_reader_entries(path));
}

// The engine outputs of the shared test collection, where it is present beside the project.
TEST(SpEnergy, RealEngineOutputs) {
  const std::string dir = QC_LOGS_DIR;
  std::ifstream manifest(dir + "/MANIFEST.tsv");
  if (!manifest) GTEST_SKIP() << "no engine outputs at " << dir;
  std::string row;
  std::getline(manifest, row);  // column names
  int checked = 0;
  for (; std::getline(manifest, row); ++checked) {
    std::vector<std::string> cells;
    std::istringstream fields(row);
    for (std::string cell; std::getline(fields, cell, '\t');) cells.push_back(cell);
    const std::string& file = cells.at(0);
    LogStore store;
    ASSERT_TRUE(read_log_store((dir + "/" + file).c_str(), store)) << file;
    EXPECT_EQ(store.entry_start.size(), std::stoul(cells.at(5))) << file;  // no long lines
    const SpEnerResult result = scan_sp_ener(store, 1);
    char energy[32] = "NONE";
    if (result.status != SpEnerStatus::marker_not_found) {
      std::snprintf(energy, sizeof energy, "%.15g", result.hartree);
      EXPECT_EQ(std::to_string(result.entry + 1), cells.at(7)) << file;
    }
    EXPECT_EQ(energy, cells.at(9)) << file;  // the energy as %.15g, or NONE
  }
  EXPECT_GT(checked, 0);
}

}  // namespace
