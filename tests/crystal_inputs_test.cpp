// Reading a crystal's outputs for the check: what its recorded runs (tests/cli/check_*) cannot show
// cheaply, the SCF counts of files too large to keep.
#include "crystal_inputs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "test_files.h"

namespace {

// The "SCF Done" lines are counted in every byte, however large the file: head and tail
// overlapping, or far apart (the middle one seen by neither). A line that holds the marker twice
// counts once, the file's first line never (the job never takes it).
TEST(ReadFileRow, CountsScfEnergiesOfEveryByte) {
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U.\n";
  const std::string pad(kHeadBytes, ' ');
  const std::string far(kTailBytes, '\n');
  const struct {
    std::string text;
    int count;
  } cases[] = {
      {"x\n" + scf + scf, 2},
      {scf + scf, 1},
      {"x\n" + scf + pad + scf + scf, 3},
      {"x\n" + scf + pad + scf + far + scf + far + scf, 4},
      {"x\n SCF Done SCF Done\n" + pad + far + scf, 2},
  };
  const std::string name = test_file_path(".log");
  for (const auto& c : cases) {
    std::ofstream(name, std::ios::binary) << c.text;
    FileRow row;
    row.file = name;
    read_file_row(row);
    EXPECT_EQ(row.energy, SpEnerStatus::found);
    EXPECT_EQ(row.summary.scf_count, c.count);
  }
  std::remove(name.c_str());
}

}  // namespace
