// Times check_inter_ener against the energy job it checks, on the same batch list, in
// alternating runs with the page cache warm and then cold, and prints the median times and
// their ratio (goal: the check takes at most twice the job's time).
//
//   check_vs_job JOB CHECK DIR RUNS LOG...
// runs, in DIR, "JOB -batch int_ener_files.dat" and "CHECK -batch int_ener_files.dat" RUNS
// times each. For the cold runs every LOG is evicted from the page cache before each run.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

// Medians of the job's and the check's times over `runs` alternating runs.
void compare(const char* label, const std::vector<std::string>& job,
             const std::vector<std::string>& check, const std::vector<std::string>& logs, int runs,
             bool cold) {
  std::vector<double> t_job, t_check;
  for (int r = 0; r < runs; ++r) {
    if (cold) evict(logs);
    t_job.push_back(run(job).seconds);
    if (cold) evict(logs);
    t_check.push_back(run(check, 2).seconds);  // statuses 1 and 2 report findings
  }
  const double ratio = median(t_check) / median(t_job);
  std::printf("  %-5s job %8.4f s   check %8.4f s   %.2f x job   (goal <= 2)  %s\n", label,
              median(t_job), median(t_check), ratio, ratio <= 2 ? "ok" : "OVER");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 6) {
    std::fprintf(stderr, "usage: %s JOB CHECK DIR RUNS LOG...\n", argv[0]);
    return 2;
  }
  if (chdir(argv[3]) != 0) {
    std::perror(argv[3]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[4]));
  const std::vector<std::string> logs(argv + 5, argv + argc);
  const std::vector<std::string> job = {argv[1], "-batch", "int_ener_files.dat"};
  const std::vector<std::string> check = {argv[2], "-batch", "int_ener_files.dat"};
  std::printf("check_inter_ener against get_inter_ener, %d alternating runs, %zu files\n", runs,
              logs.size());
  run(check, 2);  // warm the page cache
  compare("warm", job, check, logs, runs, false);
  compare("cold", job, check, logs, runs, true);
  return 0;
}
