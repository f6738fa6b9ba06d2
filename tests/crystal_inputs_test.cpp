// Reading a crystal's outputs for the check: what its recorded runs (tests/cli/check_*) cannot show
// cheaply, the SCF counts of files too large to keep.
#include "crystal_inputs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "test_files.h"

namespace {

// The row of an output holding `text`, read as the check reads it.
FileRow row_of(const std::string& text) {
  const std::string name = test_file_path(".log");
  std::ofstream(name, std::ios::binary) << text;
  FileRow row;
  row.file = name;
  read_file_row(row);
  std::remove(name.c_str());
  return row;
}

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
  for (const auto& c : cases) {
    const FileRow row = row_of(c.text);
    EXPECT_EQ(row.energy, SpEnerStatus::found);
    EXPECT_EQ(row.summary.scf_count, c.count);
  }
}

// An ORCA NMR job prints its final energy some 400 KB before its end, beyond the kept tail: the
// file is read further back until a block holds it, or to its beginning when none does.
TEST(ReadFileRow, FindsAFinalEnergyFarBeforeTheEnd) {
  const std::string banner = "\n* O   R   C   A *\n";
  std::string properties;  // 400 KiB of lines after the final energy
  for (int i = 0; i < 400 * 16; ++i)
    properties += " NMR shielding tensor, a line of 64 bytes .....................\n";
  const std::string end = "****ORCA TERMINATED NORMALLY****\n";
  const std::string before = properties.substr(0, 2 * kHeadBytes);  // the final line past the head
  const struct {
    std::string text;
    const char* level;  // "" none found
    double hartree;
  } cases[] = {
      {banner + before + "FINAL SINGLE POINT ENERGY  -382.05\n" + properties + end, "SCF", -382.05},
      // The level 200 KiB before the final line: in the block before the one that holds it.
      {banner + before + "E(CCSD(T))  ...  -76.24\n" + properties.substr(0, 200 * 1024) +
           "FINAL SINGLE POINT ENERGY  -76.24\n" + properties + end,
       "CCSD(T)", -76.24},
      {banner + properties + end, "", 0.0},
  };
  for (const auto& c : cases) {
    const FileRow row = row_of(c.text);
    const FinalEnergyLine& f = row.summary.final_energy;
    EXPECT_EQ(row.summary.engine, Engine::orca);
    EXPECT_EQ(f.found ? f.level : "", c.level);
    EXPECT_EQ(f.hartree, c.hartree);
  }
}

}  // namespace
