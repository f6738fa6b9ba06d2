// Fuzzes the readers of the batch job list and of the neighbour table on arbitrary bytes.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "input_lists.h"
#include "mmutil/text.h"

namespace {

void check_batch_list(std::FILE* file) {
  BatchList list;
  if (read_batch_list(file, list) != ListStatus::ok) return;
  if (list.job_lines.size() != static_cast<std::size_t>(list.job_count)) __builtin_trap();
  std::vector<std::string> names;
  for (const std::string& line : list.job_lines) {
    if (line.size() > 255) __builtin_trap();  // one read of the 256-byte buffer at most
    mmutil::tokenize(names, line.c_str(), " ");
  }
}

void check_neighbor_table(std::FILE* file) {
  NeighborTable table;
  ListFault fault;
  // A first reading learns the number of sites the table states; a cell of up to 1000 sites
  // is then read whole.
  read_neighbor_list(file, -1, table, fault);
  const int sites = table.nmols_uc;
  if (sites < 0 || sites > 1000) return;
  std::rewind(file);
  if (read_neighbor_list(file, sites, table, fault) != ListStatus::ok) return;
  std::size_t listed = 0;
  for (const std::vector<int>& neighbors : table.neighbor_mol_id) {
    for (const int k : neighbors) {
      if (k < 0 || k >= sites) __builtin_trap();
    }
    listed += neighbors.size();
  }
  if (table.neighbor_mol_id.size() != static_cast<std::size_t>(sites) || listed > kMaxCount) {
    __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  bytes += '\0';  // fmemopen takes no empty buffer
  std::FILE* file = fmemopen(bytes.data(), size == 0 ? 1 : size, "r");
  if (file == nullptr) return 0;
  check_batch_list(file);
  std::rewind(file);
  check_neighbor_table(file);
  std::fclose(file);
  return 0;
}
