// Times check_inter_ener against the energy job it checks, on the same batch list, in
// alternating runs with the page cache warm and then cold, and prints the median times and
// their ratio against a goal.
//
//   check_vs_job [-verbose] GOAL JOB CHECK DIR RUNS LOG...
// runs, in DIR, "JOB -batch int_ener_files.dat" (with -verbose: "JOB -verbose -batch ...",
// which reads every byte, as the check may) and "CHECK -batch int_ener_files.dat" RUNS times
// each; the goal is the largest ratio of the check's median to the job's. For the cold runs
// every LOG is evicted from the page cache before each run.
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
             bool cold, double goal) {
  std::vector<double> t_job, t_check;
  for (int r = 0; r < runs; ++r) {
    if (cold) evict(logs);
    t_job.push_back(run(job).seconds);
    if (cold) evict(logs);
    t_check.push_back(run(check, 2).seconds);  // statuses 1 and 2 report findings
  }
  const double ratio = median(t_check) / median(t_job);
  std::printf("  %-5s job %8.4f s   check %8.4f s   %.2f x job   (goal <= %.1f)  %s\n", label,
              median(t_job), median(t_check), ratio, goal, ratio <= goal ? "ok" : "OVER");
}

}  // namespace

int main(int argc, char** argv) {
  const bool verbose = argc > 1 && std::string(argv[1]) == "-verbose";
  const int first = verbose ? 2 : 1;  // GOAL
  if (argc < first + 6) {
    std::fprintf(stderr, "usage: %s [-verbose] GOAL JOB CHECK DIR RUNS LOG...\n", argv[0]);
    return 2;
  }
  const double goal = std::atof(argv[first]);
  if (chdir(argv[first + 3]) != 0) {
    std::perror(argv[first + 3]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[first + 4]));
  const std::vector<std::string> logs(argv + first + 5, argv + argc);
  std::vector<std::string> job = {argv[first + 1], "-batch", "int_ener_files.dat"};
  if (verbose) job.insert(job.begin() + 1, "-verbose");
  const std::vector<std::string> check = {argv[first + 2], "-batch", "int_ener_files.dat"};
  std::printf("check_inter_ener against get_inter_ener%s, %d alternating runs, %zu files\n",
              verbose ? " -verbose" : "", runs, logs.size());
  run(check, 2);  // warm the page cache
  compare("warm", job, check, logs, runs, false, goal);
  compare("cold", job, check, logs, runs, true, goal);
  return 0;
}
