// Times the whole energy job against `cat` of the same output files, in alternating runs, and
// prints the median times, their ratios and the peak resident memory of the job.
//
//   job_vs_cat TOOL DIR RUNS LOG...
// runs, in DIR, "cat LOG... >/dev/null", "TOOL -batch int_ener_files.dat" and the same with
// -verbose, RUNS times each, one after the other.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "timed_run.h"

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: %s TOOL DIR RUNS LOG...\n", argv[0]);
    return 2;
  }
  const std::string tool = argv[1];
  if (chdir(argv[2]) != 0) {
    std::perror(argv[2]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[3]));
  std::vector<std::string> cat = {"cat"};
  long long largest = 0;
  for (int i = 4; i < argc; ++i) {
    cat.emplace_back(argv[i]);
    struct stat info {};
    if (stat(argv[i], &info) == 0) largest = std::max<long long>(largest, info.st_size);
  }
  const std::vector<std::string> job = {tool, "-batch", "int_ener_files.dat"};
  const std::vector<std::string> verbose_job = {tool, "-verbose", "-batch", "int_ener_files.dat"};

  std::vector<double> t_cat, t_job, t_verbose;
  long peak_kib = 0;
  timed_run(cat);  // warm the page cache
  for (int r = 0; r < runs; ++r) {
    t_cat.push_back(timed_run(cat).seconds);
    const RunResult plain = timed_run(job);
    const RunResult verbose = timed_run(verbose_job);
    t_job.push_back(plain.seconds);
    t_verbose.push_back(verbose.seconds);
    peak_kib = std::max({peak_kib, plain.max_rss_kib, verbose.max_rss_kib});
  }
  const double cat_s = median(t_cat);
  const double job_ratio = median(t_job) / cat_s;
  const double verbose_ratio = median(t_verbose) / cat_s;
  const double peak_mib = peak_kib / 1024.0;
  const double memory_goal_mib = 1.1 * static_cast<double>(largest) / (1 << 20) + 16;
  std::printf("%d alternating runs, %d files, largest %.1f MiB\n", runs, argc - 4,
              static_cast<double>(largest) / (1 << 20));
  std::printf("  cat of the files      %8.4f s (median)\n", cat_s);
  std::printf("  job                   %8.4f s   %.3f x cat   (goal <= 1.2)  %s\n", median(t_job),
              job_ratio, job_ratio <= 1.2 ? "ok" : "OVER");
  std::printf("  job -verbose          %8.4f s   %.3f x cat   (goal <= 1.5)  %s\n",
              median(t_verbose), verbose_ratio, verbose_ratio <= 1.5 ? "ok" : "OVER");
  std::printf("  peak resident memory  %8.1f MiB (goal <= %.1f MiB)  %s\n", peak_mib,
              memory_goal_mib, peak_mib <= memory_goal_mib ? "ok" : "OVER");
  return 0;
}
