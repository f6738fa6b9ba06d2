// Timing a program run from the benchmarks: one run, its wall time and peak memory, and the
// median of several.
#ifndef GET_INTER_ENER_BENCH_TIMED_RUN_H
#define GET_INTER_ENER_BENCH_TIMED_RUN_H

#include <string>
#include <utility>
#include <vector>

struct RunResult {
  double seconds;      // wall-clock time
  double cpu_seconds;  // user and system time of the process: steadier on a shared machine
  long max_rss_kib;
};

// A file and the FIFO that "cat FILE" feeds while a run reads it.
using Feeder = std::pair<std::string, std::string>;

// Runs `args` in the current directory with standard output sent to /dev/null, while
// `feeders` run beside it, and times them all. An exit status above `max_status`, or a signal,
// ends the benchmark with a message.
//
//   run({"cat", "a.log"}) -> {0.002, 1800}
RunResult run(const std::vector<std::string>& args, int max_status = 0,
              const std::vector<Feeder>& feeders = {});

// Drops the cached pages of `files`, so that the next run reads them from the disk.
void evict(const std::vector<std::string>& files);

// The median of `v` (not empty): the middle value, or the mean of the two middle ones.
//
//   {3, 1, 2} -> 2;   {4, 1, 3, 2} -> 2.5
double median(std::vector<double> v);

#endif  // GET_INTER_ENER_BENCH_TIMED_RUN_H
