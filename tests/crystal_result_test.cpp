// The figures of disorder on crystals computed by hand: mutual and one-sided lists, a site beside
// its own periodic image, two images of one site, one site, no neighbours, no sites. The energies
// and tables themselves are in the recorded se_* runs.
#include "crystal_result.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "test_files.h"

namespace {

TEST(Disorder, HandComputedCrystals) {
  using Lists = std::vector<std::vector<int>>;
  const struct {
    std::vector<double> energy;
    Lists neighbors;
    double sigma_site, sigma_delta;
    bool has_ratio;
    double ratio;
    long pairs;
  } cases[] = {
      {{0, 10}, {{1}, {0}}, 5, 10, true, 2, 2},                                // a mutual pair
      {{0, 10, 20}, {{1}, {2}, {}}, std::sqrt(200.0 / 3), 10, true, 0.75, 2},  // one-sided
      {{0, 10}, {{0, 1}, {1, 0}}, 5, std::sqrt(50.0), true, 1, 4},             // periodic images
      {{0, 10}, {{1, 1}, {0}}, 5, 10, true, 2, 3},                             // two images of 2
      {{7}, {{0}}, 0, 0, false, 0, 1},                                         // one site
      {{0, 10}, {{}, {}}, 5, 0, true, 0, 0},                                   // no neighbours
      {{}, {}, 0, 0, false, 0, 0},                                             // no sites
  };
  for (const auto& c : cases) {
    const Disorder d = disorder_of(c.energy, c.neighbors);
    SCOPED_TRACE(testing::PrintToString(c.energy) + " " + testing::PrintToString(c.neighbors));
    EXPECT_NEAR(d.sigma_site, c.sigma_site, 1e-12);
    EXPECT_NEAR(d.sigma_delta, c.sigma_delta, 1e-12);
    EXPECT_EQ(d.has_ratio, c.has_ratio);
    EXPECT_NEAR(d.ratio, c.ratio, 1e-12);
    EXPECT_EQ(d.pairs, c.pairs);
    EXPECT_EQ(d.sites, static_cast<int>(c.energy.size()));
  }
}

// The real outputs beside the project, each as a one-site crystal in all three roles: the energy
// taken is the one the file prints, as its manifest gives it (Gaussian: the last "SCF Done"
// field as atof reads it; the other engines: the value of their final-energy line).
TEST(RealOutputs, GiveTheEnergiesTheyPrint) {
  const std::string dir = QC_LOGS_DIR;
  const auto rows = manifest_rows(dir);
  if (rows.empty()) GTEST_SKIP() << "no engine outputs at " << dir;
  for (const std::vector<std::string>& cells : rows) {
    const std::size_t value = cells.at(12).find("(value ");
    const std::string expected =
        cells.at(9) != "NONE" ? cells.at(9) : cells.at(12).substr(value + 7);
    SCOPED_TRACE(cells.at(0));
    CrystalInputs in;
    in.batch_opened = in.neighbors_read = in.neighbors_opened = true;
    FileRow& row = in.rows.emplace_back();
    row.site = 1;
    row.file = dir + "/" + cells.at(0);
    read_file_row(row);
    in.sites.push_back({1, "f f f", {0, 0, 0}});
    in.neighbors.neighbor_mol_id = {{0}};
    ReadingChoice choice;
    choice.force = true;  // one file in three roles is a wrong charge
    const CrystalResult r = evaluate_crystal("real", in, check_crystal(in), choice);
    EXPECT_EQ(r.refused, "");
    ASSERT_EQ(r.files.size(), 1u);
    EXPECT_EQ(r.files[0].hartree, std::strtod(expected.c_str(), nullptr));
  }
  EXPECT_EQ(rows.size(), 12u);
}

}  // namespace
