// Reading a crystal's outputs for the check: what its recorded runs (tests/cli/check_*) cannot show
// cheaply, the SCF counts of files too large to keep.
#include "crystal_inputs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "crystal_findings.h"
#include "test_files.h"

namespace {

// The row of an output holding `text`, read as the check (or, `reading`, site_energies) reads it.
FileRow row_of(const std::string& text, OutputReading reading = OutputReading::whole) {
  const std::string name = test_file_path(".log");
  std::ofstream(name, std::ios::binary) << text;
  FileRow row;
  row.file = name;
  read_file_row(row, reading);
  std::remove(name.c_str());
  return row;
}

// The check counts the "SCF Done" lines in every byte, however large the file: head and tail
// overlapping, or far apart (the middle one seen by neither). A line that holds the marker twice
// counts once, the file's first line never (the job never takes it). Reading the ends alone
// counts them in a text that head and tail cover, and otherwise says how many its two ends hold
// and how much lies unread between them, which the finding then says.
TEST(ReadFileRow, CountsScfEnergiesOfEveryByteOrOfTheEnds) {
  const std::string scf = " SCF Done:  E(RB3LYP) =  -78.5     A.U.\n";
  const std::string pad(kHeadBytes, ' ');
  const std::string far(kTailBytes, '\n');
  const struct {
    std::string text;
    int count, seen;  // ends: -1 and seen, or the count and 0
  } cases[] = {
      {"x\n" + scf + scf, 2, 0},
      {scf + scf, 1, 0},
      {"x\n" + scf + pad + scf + scf, 3, 0},
      {" Entering Gaussian System\n" + scf + pad + scf + far + scf + far + scf, 4, 2},
      {"x\n SCF Done SCF Done\n" + pad + far + scf, 2, 2},
      {"x\n" + pad + far + far + scf, 1, 1},
  };
  for (const auto& c : cases) {
    const FileRow whole = row_of(c.text), ends = row_of(c.text, OutputReading::ends);
    EXPECT_EQ(whole.energy, SpEnerStatus::found);
    EXPECT_EQ(whole.summary.scf_count, c.count);
    EXPECT_EQ(ends.energy_line, whole.energy_line);
    EXPECT_EQ(ends.summary.scf_count, c.seen > 0 ? -1 : c.count);
    EXPECT_EQ(ends.summary.scf_seen, c.seen);
    EXPECT_EQ(ends.unread_bytes, c.seen > 0 ? c.text.size() - kHeadBytes - kTailBytes : 0);
  }
  CrystalInputs in;
  in.batch_opened = true;
  in.sites.push_back({1, "f f f", {0, 0, 0}});
  in.rows = {row_of(cases[3].text, OutputReading::ends)};
  std::string several;
  for (const Finding& f : check_crystal(in)) {
    if (f.code == "several-scf-energies") several = f.message;
  }
  EXPECT_EQ(several,
            "a run with at least 2 SCF energies (seen in its first 32 KiB and last 256 KiB; the "
            "0.3 MiB between were not read): the last one is taken, not a chosen or lowest point");
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
