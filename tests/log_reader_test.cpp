// Tests of the line store and the energy extraction.
#include "log_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Entries = std::vector<std::string>;

std::string write_temp(const std::string& bytes) {
  // One file per test, since ctest runs the tests side by side.
  const std::string path =
      testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".log";
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

LogStore store_of(const std::string& bytes) {
  LogStore store;
  store.bytes = bytes;
  index_log_entries(store);
  return store;
}

Entries entries_of(const LogStore& store) {
  Entries entries;
  for (std::size_t i = 0; i < store.entry_start.size(); ++i) {
    entries.emplace_back(log_entry(store, i));
  }
  return entries;
}

// The entries as a line reader with a 1024-byte buffer sees them: read a piece, measure its
// text, and drop a newline found from its end backwards, never at position 0.
Entries reference_entries(const std::string& path) {
  Entries entries;
  std::FILE* file = std::fopen(path.c_str(), "r");
  char buffer[1024];
  while (std::fgets(buffer, sizeof buffer, file) != nullptr) {
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
  struct Case {
    std::string bytes;
    Entries expected;
  } const cases[] = {
      {"", {}},
      {"a\n\nb", {"a", "\n", "b"}},  // an empty line keeps its newline; no final newline
      {"\n", {"\n"}},
      {"  a \t\n", {"  a \t"}},
      {"x\r\ny\r\n", {"x\r", "y\r"}},
      {std::string(1500, 'x') + "\n", {x1023, std::string(477, 'x')}},
      {x1023 + "\n", {x1023, "\n"}},
      {x1023.substr(1) + "\n", {x1023.substr(1)}},
      {x1023 + x1023, {x1023, x1023}},
      {std::string("ab\0cd\nef\n\0\n", 11), {"ab", "ef", ""}},  // text ends at its first NUL
  };
  for (const Case& c : cases) {
    LogStore store;
    ASSERT_TRUE(read_log_store(write_temp(c.bytes).c_str(), store));
    EXPECT_EQ(entries_of(store), c.expected) << c.bytes.substr(0, 40);
    EXPECT_EQ(entries_of(store), reference_entries(write_temp(c.bytes))) << c.bytes.substr(0, 40);
  }
}

TEST(LineStore, AgreesWithALineReaderOnMixedLengths) {
  std::string bytes;
  for (int length = 0; length < 3100; length += 97) {
    bytes += std::string(length, 'a' + length % 26) + (length % 3 == 0 ? "\r\n" : "\n");
    if (length % 5 == 0) bytes += '\0';
  }
  LogStore store;
  ASSERT_TRUE(read_log_store(write_temp(bytes).c_str(), store));
  EXPECT_EQ(entries_of(store), reference_entries(write_temp(bytes)));
}

TEST(LineStore, MissingFileLeavesTheStoreAsItWas) {
  LogStore store = store_of("a\nb\n");
  EXPECT_FALSE(read_log_store("no/such/file.log", store));
  EXPECT_EQ(entries_of(store), (Entries{"a", "b"}));
}

TEST(SpEnergy, TakesTheFifthFieldOfTheLastMarkerLine) {
  const std::string head = " Entering the program\n";
  const std::string done = " SCF Done:  E(RB3LYP) =  ";
  struct Case {
    std::string text;
    SpEnerStatus status;
    double hartree;
  } const cases[] = {
      {head + done + "-1.5 A.U.\n" + done + "-2.25 A.U.\n tail\n", SpEnerStatus::found, -2.25},
      {done + "-1.5 A.U.\n tail\n", SpEnerStatus::marker_not_found, 0.0},  // first line only
      {head + " scf done:  E(RB3LYP) =  -1.5\n", SpEnerStatus::marker_not_found, 0.0},
      {head + "xx" + done.substr(1) + "-1.5\n", SpEnerStatus::found, -1.5},     // mid-word
      {head + " SCF Done:  E(RB3LYP) =-1.5 A.U.\n", SpEnerStatus::found, 0.0},  // "A.U."
      {head + done + "-6.93D+02\n", SpEnerStatus::found, -6.93},
      {head + done + "-1.5\r\n", SpEnerStatus::found, -1.5},
      {head + " SCF Done:  E(RB3LYP) =\n", SpEnerStatus::too_few_fields, 0.0},
      {head + std::string(1020, ' ') + "SCF Done:  E(R) = -1.5\n", SpEnerStatus::marker_not_found,
       0.0},  // the marker straddles the 1023-character split
      {"", SpEnerStatus::marker_not_found, 0.0},
  };
  for (const Case& c : cases) {
    const SpEnerResult result = scan_sp_ener(store_of(c.text), 1);
    EXPECT_EQ(result.status, c.status) << c.text;
    EXPECT_EQ(result.hartree, c.hartree) << c.text;
  }
}

TEST(SpEnergy, EveryCodeUpToFourReadsTheSameLineAndAboveFourIsUnknown) {
  const LogStore store = store_of(" head\n SCF Done:  E(UB3LYP) =  -693.058299531  A.U.\n");
  for (const int code : {-3, 0, 1, 2, 3, 4}) {
    const SpEnerResult result = scan_sp_ener(store, code);
    EXPECT_EQ(result.status, SpEnerStatus::found) << code;
    EXPECT_EQ(result.entry, 1u) << code;
    EXPECT_EQ(result.hartree, -693.058299531) << code;
  }
  EXPECT_EQ(scan_sp_ener(store, 5).status, SpEnerStatus::unknown_engine);
}

// The engine outputs of the shared test collection, where it is present beside the project.
TEST(SpEnergy, RealEngineOutputs) {
  const std::string dir = QC_LOGS_DIR;
  std::ifstream manifest(dir + "/MANIFEST.tsv");
  if (!manifest) GTEST_SKIP() << "no engine outputs at " << dir;
  std::string row;
  std::getline(manifest, row);  // column names
  int checked = 0;
  while (std::getline(manifest, row)) {
    std::vector<std::string> cells;
    std::istringstream fields(row);
    for (std::string cell; std::getline(fields, cell, '\t');) cells.push_back(cell);
    const std::string& file = cells.at(0);
    const std::string& expected = cells.at(9);  // the energy as %.15g, or NONE
    LogStore store;
    ASSERT_TRUE(read_log_store((dir + "/" + file).c_str(), store)) << file;
    EXPECT_EQ(store.entry_start.size(), std::stoul(cells.at(5))) << file;
    const SpEnerResult result = scan_sp_ener(store, 1);
    if (expected == "NONE") {
      EXPECT_EQ(result.status, SpEnerStatus::marker_not_found) << file;
    } else {
      char text[32];
      std::snprintf(text, sizeof text, "%.15g", result.hartree);
      EXPECT_EQ(result.status, SpEnerStatus::found) << file;
      EXPECT_EQ(text, expected) << file;
      EXPECT_EQ(result.entry + 1, std::stoul(cells.at(7))) << file;
    }
    ++checked;
  }
  EXPECT_GT(checked, 0);
}

}  // namespace
