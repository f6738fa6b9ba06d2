// Times check_inter_ener against the energy job it checks, on the same batch list, in
// alternating runs with the page cache warm and then cold, and prints the median times and
// their ratios. The check reads every byte of each output once (its SCF column counts every
// "SCF Done" line), as the job does with -verbose (which counts every line); the job without it
// reads only the end. Goals: at most 1.5 x "JOB -verbose" on large outputs, and at most 1.2 x
// the job where the outputs are small enough to be read whole by both (GOAL_JOB = 1.2 then;
// 0 leaves that ratio without a goal).
//
//   check_vs_job JOB CHECK DIR RUNS GOAL_JOB LOG...
// runs, in DIR, "JOB -batch int_ener_files.dat", "JOB -verbose -batch int_ener_files.dat" and
// "CHECK -batch int_ener_files.dat" RUNS times each. For the cold runs every LOG is evicted from
// the page cache before each run.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

// "ok" or "OVER" against a goal; no goal (0): "".
const char* verdict(double ratio, double goal) {
  return goal <= 0 ? "" : ratio <= goal ? "ok" : "OVER";
}

// Medians of the job's, the verbose job's and the check's times over `runs` alternating runs.
void compare(const char* label, const std::vector<std::string>& job,
             const std::vector<std::string>& check, const std::vector<std::string>& logs, int runs,
             bool cold, double goal_job) {
  std::vector<std::string> verbose = job;
  verbose.insert(verbose.begin() + 1, "-verbose");
  std::vector<double> t_job, t_verbose, t_check;
  for (int r = 0; r < runs; ++r) {
    if (cold) evict(logs);
    t_job.push_back(run(job).seconds);
    if (cold) evict(logs);
    t_verbose.push_back(run(verbose).seconds);
    if (cold) evict(logs);
    t_check.push_back(run(check, 2).seconds);  // statuses 1 and 2 report findings
  }
  const double to_job = median(t_check) / median(t_job);
  const double to_verbose = median(t_check) / median(t_verbose);
  std::printf(
      "  %-5s job %8.4f s   -verbose %8.4f s   check %8.4f s   %.2f x job %s   "
      "%.2f x -verbose (goal <= 1.5) %s\n",
      label, median(t_job), median(t_verbose), median(t_check), to_job, verdict(to_job, goal_job),
      to_verbose, verdict(to_verbose, 1.5));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 7) {
    std::fprintf(stderr, "usage: %s JOB CHECK DIR RUNS GOAL_JOB LOG...\n", argv[0]);
    return 2;
  }
  if (chdir(argv[3]) != 0) {
    std::perror(argv[3]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[4]));
  const double goal_job = std::atof(argv[5]);
  const std::vector<std::string> logs(argv + 6, argv + argc);
  const std::vector<std::string> job = {argv[1], "-batch", "int_ener_files.dat"};
  const std::vector<std::string> check = {argv[2], "-batch", "int_ener_files.dat"};
  std::printf("check_inter_ener against get_inter_ener, %d alternating runs, %zu files\n", runs,
              logs.size());
  run(check, 2);  // warm the page cache
  compare("warm", job, check, logs, runs, false, goal_job);
  compare("cold", job, check, logs, runs, true, goal_job);
  return 0;
}
