// Times the whole energy job on compressed output files against the format's own
// decompressor writing the same files to /dev/null, for gzip, bzip2, xz and zstd, in
// alternating runs, and prints the median times (wall clock, and the processes' own CPU time,
// which other work on the machine disturbs less), their ratios and the peak resident memory.
//
//   compressed_vs_decompressor TOOL DIR RUNS LOG...
// compresses each LOG of DIR once per format (LOG.gz, LOG.bz2, LOG.xz, LOG.zst, kept for later
// runs), writes the batch list int_ener_files.EXT.dat naming them as one job, and runs
// "zcat LOG.gz... >/dev/null" (bzcat, xzcat, zstdcat), "TOOL -batch int_ener_files.EXT.dat",
// the same with -verbose, and "decode_text LOG.gz..." (the decoding alone, found beside this
// program), RUNS times each. A format whose tools are not installed is skipped.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "timed_run.h"

namespace {

struct Format {
  const char* extension;
  const char* compress;    // the command that writes the compressed file to standard output
  const char* decompress;  // the reference decompressor
};

const Format kFormats[] = {
    {"gz", "gzip -c", "zcat"},
    {"bz2", "bzip2 -c", "bzcat"},
    {"xz", "xz -c", "xzcat"},
    {"zst", "zstd -q -c", "zstdcat"},
};

// The runs of one command.
struct Series {
  std::vector<double> wall, cpu;
  long peak_kib = 0;
};

void record(Series& series, const RunResult& run) {
  series.wall.push_back(run.seconds);
  series.cpu.push_back(run.cpu_seconds);
  series.peak_kib = std::max(series.peak_kib, run.max_rss_kib);
}

bool on_path(const char* command) {
  return std::system(("command -v " + std::string(command) + " > /dev/null").c_str()) == 0;
}

// Compresses `log` to `packed` unless that file is already there.
bool compress_once(const Format& format, const std::string& log, const std::string& packed) {
  struct stat info {};
  if (stat(packed.c_str(), &info) == 0) return true;
  std::printf("  compressing %s\n", packed.c_str());
  std::fflush(stdout);
  const std::string command = std::string(format.compress) + " '" + log + "' > '" + packed +
                              ".part' && mv '" + packed + ".part' '" + packed + "'";
  return std::system(command.c_str()) == 0;
}

// Runs the reference, the job and the job with -verbose `runs` times in turn; prints the
// medians and ratios, and the peak memory of each.
void compare(const Format& format, const std::string& tool, const std::string& decoder,
             const std::vector<std::string>& logs, int runs) {
  const std::string ext = format.extension;
  std::vector<std::string> reference = {format.decompress};
  std::string batch = "1\n";
  for (const std::string& log : logs) {
    if (!compress_once(format, log, log + "." + ext)) {
      std::printf("%s: compressing %s failed\n", ext.c_str(), log.c_str());
      return;
    }
    reference.push_back(log + "." + ext);
    batch += log + "." + ext + " ";
  }
  const std::string batch_name = "int_ener_files." + ext + ".dat";
  std::ofstream(batch_name) << batch << "\n";
  const std::vector<std::string> job = {tool, "-batch", batch_name};
  const std::vector<std::string> verbose_job = {tool, "-verbose", "-batch", batch_name};
  std::vector<std::string> decoding = reference;
  decoding[0] = decoder;

  Series reference_runs, job_runs, verbose_runs, decoding_runs;
  run(reference);  // warm the page cache
  for (int r = 0; r < runs; ++r) {
    record(reference_runs, run(reference));
    record(job_runs, run(job));
    record(verbose_runs, run(verbose_job));
    record(decoding_runs, run(decoding));
  }
  const double ref_wall = median(reference_runs.wall), ref_cpu = median(reference_runs.cpu);
  std::printf("%s, %d alternating runs     wall (median)          CPU (median)\n", ext.c_str(),
              runs);
  std::printf("  %-14s %8.4f s               %8.4f s\n", format.decompress, ref_wall, ref_cpu);
  const std::pair<const char*, const Series*> jobs[] = {
      {"job", &job_runs}, {"job -verbose", &verbose_runs}, {"decoding alone", &decoding_runs}};
  for (const auto& [name, series] : jobs) {
    const double wall = median(series->wall), cpu = median(series->cpu);
    std::printf("  %-14s %8.4f s  %.3f x     %8.4f s  %.3f x   (goal <= 1.1)  %s\n", name, wall,
                wall / ref_wall, cpu, cpu / ref_cpu, wall / ref_wall <= 1.1 ? "ok" : "OVER");
  }
  const long job_kib = std::max(job_runs.peak_kib, verbose_runs.peak_kib);
  const double goal_mib = reference_runs.peak_kib / 1024.0 + 16;
  std::printf("  peak resident memory: job %.1f MiB, %s %.1f MiB (goal <= %.1f MiB)  %s\n",
              job_kib / 1024.0, format.decompress, reference_runs.peak_kib / 1024.0, goal_mib,
              job_kib / 1024.0 <= goal_mib ? "ok" : "OVER");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: %s TOOL DIR RUNS LOG...\n", argv[0]);
    return 2;
  }
  if (chdir(argv[2]) != 0) {
    std::perror(argv[2]);
    return 1;
  }
  const int runs = std::max(1, std::atoi(argv[3]));
  const std::vector<std::string> logs(argv + 4, argv + argc);
  char self[4096] = {};
  if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) {
    std::perror("/proc/self/exe");
    return 1;
  }
  const std::string here(self);
  const std::string decoder = here.substr(0, here.rfind('/') + 1) + "decode_text";
  for (const Format& format : kFormats) {
    const std::string compressor(format.compress, std::string(format.compress).find(' '));
    if (!on_path(compressor.c_str()) || !on_path(format.decompress)) {
      std::printf("%s: skipped, %s or %s is not installed\n", format.extension, compressor.c_str(),
                  format.decompress);
      continue;
    }
    compare(format, argv[1], decoder, logs, runs);
  }
  return 0;
}
