// Throughput of the reader on one output file:
//   log_reader_bench [benchmark flags] FILE
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "log_reader.h"

namespace {

std::string g_file;

// Takes the energy line, as a run without -verbose does.
void BM_EnergyLine(benchmark::State& state) {
  LogScan scan;
  for (auto _ : state) {
    scan_log_file(g_file.c_str(), LogScanOptions{}, scan);
    benchmark::DoNotOptimize(scan.energy_entry.data());
  }
}

// The same with the entry count that -verbose prints: the whole file read forward.
void BM_CountAndEnergyLine(benchmark::State& state) {
  LogScan scan;
  LogScanOptions options;
  options.count_entries = true;
  for (auto _ : state) {
    scan_log_file(g_file.c_str(), options, scan);
    benchmark::DoNotOptimize(scan.entry_count);
    state.SetBytesProcessed(state.bytes_processed() + static_cast<int64_t>(scan.text_size));
  }
}

BENCHMARK(BM_EnergyLine)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountAndEnergyLine)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s [benchmark flags] FILE\n", argv[0]);
    return 2;
  }
  g_file = argv[1];
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
