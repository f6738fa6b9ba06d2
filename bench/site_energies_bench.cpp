// Times site_energies: on one crystal against check_inter_ener on the same crystal (goal: at
// most 1.2 x), and on a whole generated campaign in one process (goal: at least 1500 crystals a
// second), with its peak memory against that of a run over its first 100 crystals (goal: at
// most 1.5 x: memory grows with the largest crystal, not with their number).
//
//   site_energies_bench CHECK SITE_ENERGIES CRYSTAL_DIR CAMPAIGN_DIR RUNS
// CAMPAIGN_DIR holds one directory per crystal; RUNS alternating runs on the crystal, and three
// on the campaign; medians. Warm page cache.
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

const char* verdict(bool ok) { return ok ? "ok" : "OVER"; }

// The crystal directories of `campaign`, in name order.
std::vector<std::string> crystal_dirs(const char* campaign) {
  std::vector<std::string> names;
  DIR* dir = opendir(campaign);
  if (dir == nullptr) return names;
  while (const dirent* entry = readdir(dir)) {
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fprintf(stderr, "usage: %s CHECK SITE_ENERGIES CRYSTAL_DIR CAMPAIGN_DIR RUNS\n", argv[0]);
    return 2;
  }
  const std::string check = argv[1], site_energies = argv[2];
  const int runs = std::max(1, std::atoi(argv[5]));
  if (chdir(argv[3]) != 0) {
    std::perror(argv[3]);
    return 1;
  }
  std::vector<double> t_check, t_site;
  for (int r = 0; r < runs; ++r) {
    t_check.push_back(run({check, "-batch", "int_ener_files.dat"}, 2).seconds);
    t_site.push_back(run({site_energies, "."}, 2).seconds);
  }
  const double ratio = median(t_site) / median(t_check);
  std::printf("site_energies on one crystal, %d alternating runs\n", runs);
  std::printf("  check %8.4f s   site_energies %8.4f s   %.2f x check   (goal <= 1.2)  %s\n",
              median(t_check), median(t_site), ratio, verdict(ratio <= 1.2));

  const std::vector<std::string> names = crystal_dirs(argv[4]);
  if (names.empty() || chdir(argv[4]) != 0) {
    std::fprintf(stderr, "no crystals in %s\n", argv[4]);
    return 1;
  }
  std::vector<std::string> all = {site_energies, "--json"}, first = all;
  all.insert(all.end(), names.begin(), names.end());
  first.insert(first.end(), names.begin(),
               names.begin() + std::min<std::size_t>(100, names.size()));
  std::vector<double> t_all;
  long rss_all = 0;
  for (int r = 0; r < 3; ++r) {
    const RunResult result = run(all, 2);
    t_all.push_back(result.seconds);
    rss_all = std::max(rss_all, result.max_rss_kib);
  }
  const long rss_first = run(first, 2).max_rss_kib;
  const double rate = static_cast<double>(names.size()) / median(t_all);
  std::printf("site_energies --json on %zu crystals in one process, 3 runs\n", names.size());
  std::printf("  %8.3f s   %.0f crystals/s   (goal >= 1500)  %s\n", median(t_all), rate,
              verdict(rate >= 1500));
  std::printf(
      "  peak resident memory %ld KiB, %ld KiB for the first 100 crystals   "
      "(goal <= 1.5 x)  %s\n",
      rss_all, rss_first, verdict(rss_all <= rss_first * 3 / 2));
  return 0;
}
