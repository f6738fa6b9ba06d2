// Reading a crystal's outputs for the check: what its recorded runs (tests/cli/check_*) cannot show
// cheaply, the SCF counts of files too large to keep.
#include "crystal_inputs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "test_files.h"

namespace {

// A file is read whole up to head plus tail bytes; beyond, only its ends are seen.
TEST(ReadFileRow, CountsScfEnergiesOfFilesReadWhole) {
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U.\n";
  const std::string pad(kHeadBytes, ' ');
  const struct {
    std::string text;
    int count, seen;
  } cases[] = {
      {"x\n" + scf + scf, 2, 2},
      {"x\n" + scf + pad + scf + scf, 3, 3},  // head and tail overlap
      {"x\n" + scf + pad + std::string(kTailBytes, '\n') + scf + scf, -1, 3},  // ends only
  };
  const std::string name = test_file_path(".log");
  for (const auto& c : cases) {
    std::ofstream(name, std::ios::binary) << c.text;
    FileRow row;
    row.file = name;
    read_file_row(row);
    EXPECT_EQ(row.energy, SpEnerStatus::found);
    EXPECT_EQ(row.summary.scf_count, c.count);
    EXPECT_EQ(row.summary.scf_seen, c.seen);
  }
  std::remove(name.c_str());
}

}  // namespace
