// Times site_energies and the check against the energy job on crystals of real size: crystal
// directories of 4 sites whose 12 outputs are 16 MiB each (log_generator's, 24 KiB after the
// last energy line as in a real single point; every file its own). The job is run as a user
// runs it over many crystals, a shell loop of "JOB -batch int_ener_files.dat -neighbor" in each
// directory; against it, over the same crystals:
//   - one "SITE_ENERGIES --force --json" process (goals: at most 1.3 x the loop with the page
//     cache warm, 1.5 x cold);
//   - a shell loop of "CHECK -batch int_ener_files.dat" (no goal: its SCF column counts every
//     "SCF Done" line, so it reads every byte; timed in the first three runs alone).
//
//   real_size_crystals JOB CHECK SITE_ENERGIES DIR RUNS COLD_RUNS
// DIR holds the crystal directories (c01, c02, ...), each with a1.log c1.log n1.log ... n4.log,
// its batch list and neighbour table. Medians of alternating runs; for a cold run every output
// is evicted from the page cache first.
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

const char* verdict(double ratio, double goal) {
  return goal <= 0 ? "" : ratio <= goal ? "ok" : "OVER";
}

// The crystal directories of the working directory ("c" and digits), in name order.
std::vector<std::string> crystal_dirs() {
  std::vector<std::string> names;
  DIR* dir = opendir(".");
  if (dir == nullptr) return names;
  while (const dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name.size() > 1 && name[0] == 'c' &&
        name.find_first_not_of("0123456789", 1) == std::string::npos) {
      names.push_back(name);
    }
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

// "PROGRAM ARGS..." in each crystal's directory, from one shell, as a user's loop runs it; a
// status above `max_status` ends the loop with status 1.
std::vector<std::string> shell_loop(const std::string& program, const std::string& args,
                                    int max_status, const std::vector<std::string>& crystals) {
  std::vector<std::string> command = {"sh", "-c",
                                      "p=$1; shift; for d; do cd \"$d\" || exit 1; \"$p\" " + args +
                                          "; [ $? -le " + std::to_string(max_status) +
                                          " ] || exit 1; cd ..; done",
                                      "sh", program};
  command.insert(command.end(), crystals.begin(), crystals.end());
  return command;
}

struct Times {
  std::vector<double> job, site, check;
};

Times time_runs(const std::vector<std::string>& job, const std::vector<std::string>& site,
                const std::vector<std::string>& check, const std::vector<std::string>& logs,
                int runs, bool cold) {
  Times t;
  for (int r = 0; r < runs; ++r) {
    if (cold) evict(logs);
    t.job.push_back(run(job).seconds);
    if (cold) evict(logs);
    t.site.push_back(run(site, 1).seconds);  // 1: written, with worth-knowing findings
    if (r >= 3) continue;
    if (cold) evict(logs);
    t.check.push_back(run(check).seconds);
  }
  return t;
}

void report(const char* label, const Times& t, std::size_t crystals, double goal) {
  const double site = median(t.site) / median(t.job), check = median(t.check) / median(t.job);
  std::printf(
      "  %-5s job loop %7.3f s (%5.0f crystals/s)   site_energies %7.3f s, %.2f x (goal <= %.1f) "
      "%s   check loop %7.3f s, %.2f x\n",
      label, median(t.job), static_cast<double>(crystals) / median(t.job), median(t.site), site,
      goal, verdict(site, goal), median(t.check), check);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr, "usage: %s JOB CHECK SITE_ENERGIES DIR RUNS COLD_RUNS\n", argv[0]);
    return 2;
  }
  if (chdir(argv[4]) != 0) {
    std::perror(argv[4]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[5])), cold_runs = std::max(1, std::atoi(argv[6]));
  const std::vector<std::string> crystals = crystal_dirs();
  if (crystals.empty()) {
    std::fprintf(stderr, "no crystal directories in %s\n", argv[4]);
    return 1;
  }
  std::vector<std::string> logs;
  for (const std::string& c : crystals) {
    for (const char* role : {"a", "c", "n"}) {
      for (int s = 1; s <= 4; ++s) logs.push_back(c + "/" + role + std::to_string(s) + ".log");
    }
  }
  const auto job =
      shell_loop(argv[1], "-batch int_ener_files.dat -neighbor >/dev/null", 0, crystals);
  const auto check = shell_loop(argv[2], "-batch int_ener_files.dat >/dev/null", 2, crystals);
  std::vector<std::string> site = {argv[3], "--force", "--json"};
  site.insert(site.end(), crystals.begin(), crystals.end());
  std::printf("%zu crystals of 4 sites, 12 outputs of 16 MiB each: %d warm and %d cold runs\n",
              crystals.size(), runs, cold_runs);
  run(site, 1);  // warms the page cache; the tables exist from here on (every run is a rerun)
  report("warm", time_runs(job, site, check, logs, runs, false), crystals.size(), 1.3);
  report("cold", time_runs(job, site, check, logs, cold_runs, true), crystals.size(), 1.5);
  return 0;
}
