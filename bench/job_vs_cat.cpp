// Times the whole energy job against `cat` of the same output files, in alternating runs, and
// prints the median times, their ratios and the job's peak resident memory.
//
//   job_vs_cat TOOL DIR RUNS MODE LOG...
//
// In DIR, with the LOGs three to a site (each site its own neighbour), RUNS times each:
//   warm  "cat LOG... >/dev/null", the job, and the job with -verbose, page cache warm;
//   cold  the same, each run after every LOG was evicted from the page cache
//         (posix_fadvise POSIX_FADV_DONTNEED); then, after a run without -verbose, the bytes
//         of each LOG that the page cache holds (mincore), against the bytes after its last
//         energy line: what the run read from disk;
//   pipe  each LOG through a FIFO fed by "cat LOG": "cat FIFO... >/dev/null" against the job
//         whose batch list names the FIFOs.
// Memory is compared with the job's own on an empty batch list.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

using Args = std::vector<std::string>;

// Bytes of `path` that the page cache holds.
long long resident_bytes(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY);
  struct stat info {};
  fstat(fd, &info);
  const auto length = static_cast<std::size_t>(info.st_size);
  void* map = mmap(nullptr, length, PROT_READ, MAP_SHARED, fd, 0);
  const long page = sysconf(_SC_PAGESIZE);
  std::vector<unsigned char> pages((length + page - 1) / page);
  mincore(map, length, pages.data());
  munmap(map, length);
  close(fd);
  return std::count_if(pages.begin(), pages.end(), [](unsigned char p) { return p & 1; }) * page;
}

// Bytes from the start of the line that holds the last "SCF Done" to the end of the file.
long long bytes_after_last_energy_line(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::size_t at = text.rfind("SCF Done");
  const std::size_t line = text.rfind('\n', at);
  return static_cast<long long>(text.size() - (line == std::string::npos ? 0 : line + 1));
}

void write_inputs(const std::string& batch, const std::vector<std::string>& names, int sites) {
  std::ofstream list(batch);
  list << sites << "\n";
  for (int s = 0; s < sites; ++s) {
    list << names[3 * s] << " " << names[3 * s + 1] << " " << names[3 * s + 2] << "\n";
  }
  std::ofstream neighbors("neighbor.dat");
  neighbors << "#\n#\n" << sites << "\n";
  for (int s = 1; s <= sites; ++s) neighbors << s << "\n1\n" << s << "\n";
}

void report(const char* what, double seconds, double ratio, double goal) {
  std::printf("  %-22s %8.4f s   %.3f x cat   (goal <= %.2f)  %s\n", what, seconds, ratio, goal,
              ratio <= goal ? "ok" : "OVER");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 8 || (argc - 5) % 3 != 0) {
    std::fprintf(stderr, "usage: %s TOOL DIR RUNS warm|cold|pipe LOG... (three to a site)\n",
                 argv[0]);
    return 2;
  }
  const std::string tool = argv[1];
  if (chdir(argv[2]) != 0) {
    std::perror(argv[2]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[3]));
  const std::string mode = argv[4];
  const std::vector<std::string> logs(argv + 5, argv + argc);
  const int sites = static_cast<int>(logs.size() / 3);

  // The job's memory on an empty batch list, in a directory of its own.
  mkdir("empty", 0755);
  if (chdir("empty") != 0) return 1;
  write_inputs("int_ener_files.dat", {}, 0);
  const long empty_kib = run({tool, "-batch", "int_ener_files.dat"}).max_rss_kib;
  if (chdir("..") != 0) return 1;

  std::vector<Feeder> feeders;
  std::vector<std::string> inputs = logs;
  if (mode == "pipe") {
    for (std::size_t i = 0; i < logs.size(); ++i) {
      inputs[i] = "fifo_" + std::to_string(i);
      unlink(inputs[i].c_str());
      mkfifo(inputs[i].c_str(), 0600);
      feeders.emplace_back(logs[i], inputs[i]);
    }
  }
  write_inputs("bench_files.dat", inputs, sites);
  Args cat = {"cat"};
  cat.insert(cat.end(), inputs.begin(), inputs.end());
  const Args job = {tool, "-batch", "bench_files.dat"};
  const Args verbose_job = {tool, "-verbose", "-batch", "bench_files.dat"};

  std::vector<double> t_cat, t_job, t_verbose;
  long peak_kib = 0;
  const bool cold = mode == "cold";
  if (!cold) run(cat, 0, feeders);  // warm the page cache
  for (int r = 0; r < runs; ++r) {
    if (cold) evict(logs);
    t_cat.push_back(run(cat, 0, feeders).seconds);
    if (cold) evict(logs);
    const RunResult plain = run(job, 0, feeders);
    if (cold) evict(logs);
    const RunResult verbose = run(verbose_job, 0, feeders);
    t_job.push_back(plain.seconds);
    t_verbose.push_back(verbose.seconds);
    peak_kib = std::max({peak_kib, plain.max_rss_kib, verbose.max_rss_kib});
  }
  long long size = 0;
  for (const std::string& log : logs) {
    struct stat info {};
    stat(log.c_str(), &info);
    size += info.st_size;
  }
  const double cat_s = median(t_cat);
  std::printf("%s page cache%s: %d alternating runs, %zu files, %.1f MiB in all\n",
              cold ? "cold" : "warm", mode == "pipe" ? ", through FIFOs" : "", runs, logs.size(),
              static_cast<double>(size) / (1 << 20));
  std::printf("  %-22s %8.4f s (median)\n", "cat of the files", cat_s);
  report("job", median(t_job), median(t_job) / cat_s, mode == "pipe" ? 1.2 : cold ? 0.05 : 0.2);
  report("job -verbose", median(t_verbose), median(t_verbose) / cat_s, mode == "pipe" ? 1.2 : 1.1);
  const double above_mib = (peak_kib - empty_kib) / 1024.0;
  std::printf("  %-22s %8.1f MiB, %.1f MiB above an empty batch (goal <= 16)  %s\n",
              "peak resident memory", peak_kib / 1024.0, above_mib,
              above_mib <= 16 ? "ok" : "OVER");
  if (cold) {
    evict(logs);
    run(job, 0, feeders);
    long long worst = 0, total = 0;
    for (const std::string& log : logs) {
      const long long read = resident_bytes(log);
      total += read;
      worst = std::max(worst, read - bytes_after_last_energy_line(log));
    }
    std::printf(
        "  %-22s %8.1f KiB a file; at most %.1f KiB more than the bytes after the last\n"
        "  %-22s energy line (goal <= 128)  %s\n",
        "read from disk", static_cast<double>(total) / 1024 / logs.size(),
        static_cast<double>(worst) / 1024, "", worst <= 128 * 1024 ? "ok" : "OVER");
  }
  if (mode == "pipe") {
    for (const std::string& fifo : inputs) unlink(fifo.c_str());
  }
  return 0;
}
