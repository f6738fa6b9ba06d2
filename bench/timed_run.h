// Timing a program run from the benchmarks: one run, its wall time and peak memory, and the
// median of several.
#ifndef GET_INTER_ENER_BENCH_TIMED_RUN_H
#define GET_INTER_ENER_BENCH_TIMED_RUN_H

#include <string>
#include <vector>

struct RunResult {
  double seconds;
  long max_rss_kib;
};

// Runs `args` in the current directory with standard output sent to /dev/null. An exit status
// above `max_status`, or a signal, ends the benchmark with a message.
//
//   run({"cat", "a.log"}) -> {0.002, 1800}
RunResult run(const std::vector<std::string>& args, int max_status = 0);

// The median of `v` (not empty): the middle value, or the mean of the two middle ones.
//
//   {3, 1, 2} -> 2;   {4, 1, 3, 2} -> 2.5
double median(std::vector<double> v);

#endif  // GET_INTER_ENER_BENCH_TIMED_RUN_H
