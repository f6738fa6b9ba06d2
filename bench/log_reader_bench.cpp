// Throughput of the line store and the energy extraction on one output file:
//   log_reader_bench [benchmark flags] FILE
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "log_reader.h"

namespace {

std::string g_file;

// Loads the file and takes its energy, as a run without -verbose does.
void BM_LoadAndExtract(benchmark::State& state) {
  LogStore store;
  for (auto _ : state) {
    read_log_store(g_file.c_str(), store);
    benchmark::DoNotOptimize(scan_sp_ener(store.text, 1).hartree);
    state.SetBytesProcessed(state.bytes_processed() + static_cast<int64_t>(store.text.size()));
    clear_log_store(store);
  }
}

// The same with the entry count that -verbose prints.
void BM_LoadCountAndExtract(benchmark::State& state) {
  LogStore store;
  for (auto _ : state) {
    read_log_store(g_file.c_str(), store);
    benchmark::DoNotOptimize(count_log_entries(store.text));
    benchmark::DoNotOptimize(scan_sp_ener(store.text, 1).hartree);
    state.SetBytesProcessed(state.bytes_processed() + static_cast<int64_t>(store.text.size()));
    clear_log_store(store);
  }
}

// The entry count alone, on a file already in memory.
void BM_CountEntries(benchmark::State& state) {
  LogStore store;
  read_log_store(g_file.c_str(), store);
  for (auto _ : state) {
    benchmark::DoNotOptimize(count_log_entries(store.text));
    state.SetBytesProcessed(state.bytes_processed() + static_cast<int64_t>(store.text.size()));
  }
  clear_log_store(store);
}

BENCHMARK(BM_LoadAndExtract)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadCountAndExtract)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountEntries)->Unit(benchmark::kMillisecond);

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
