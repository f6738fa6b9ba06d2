// The figures of disorder on crystals computed by hand: mutual and one-sided lists, a site beside
// its own periodic image, two images of one site, one site, no neighbours, no sites. The energies
// and tables themselves are in the recorded se_* runs.
#include "crystal_result.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

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

}  // namespace
