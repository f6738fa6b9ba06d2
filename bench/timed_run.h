// Running commands for the benchmarks: wall time and peak resident memory of one run, and the
// median of several.
#ifndef GET_INTER_ENER_BENCH_TIMED_RUN_H
#define GET_INTER_ENER_BENCH_TIMED_RUN_H

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

struct RunResult {
  double seconds;      // wall-clock time
  double cpu_seconds;  // user and system time of the process: steadier on a shared machine
  long max_rss_kib;
};

// Runs `args` (found on PATH) in the current directory with standard output sent to
// /dev/null; a run that fails ends the benchmark.
//
//   timed_run({"cat", "mol_1.log"})  ->  {0.012, 0.011, 2048}
inline RunResult timed_run(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const auto start = std::chrono::steady_clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  struct rusage usage {};
  wait4(pid, &status, 0, &usage);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "%s failed with status %d\n", args[0].c_str(), status);
    std::exit(1);
  }
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6;
  };
  return {elapsed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
}

// The median of `v`, which is not empty; the mean of the middle two for an even count.
//
//   median({3, 1, 2})  ->  2
inline double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 == 1 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

#endif  // GET_INTER_ENER_BENCH_TIMED_RUN_H
