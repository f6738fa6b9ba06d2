// Fuzzes the reader on arbitrary bytes against the plain line reader it must agree with: the
// entry count and the energy search in memory, and the file read backward and forward with
// blocks of a size and with a head and tail kept of a size taken from the input (bytes that
// begin with a compressed stream's header are decoded, not compared).
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "log_reader.h"
#include "reference_line_reader.h"

namespace {

// Reads the bytes as a file, backward or forward, in blocks of `block` bytes, keeping `ends`
// bytes of head and tail.
LogScan scan_as_file(const std::string& bytes, bool forward, std::size_t block, std::size_t ends) {
  LogScan scan;
  const int fd = memfd_create("log", 0);
  if (fd < 0 || write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    __builtin_trap();
  }
  LogScanOptions options;
  options.count_entries = forward;
  options.block_bytes = block;
  options.head_bytes = options.tail_bytes = ends;
  scan_log_file(("/proc/self/fd/" + std::to_string(fd)).c_str(), options, scan);
  close(fd);
  return scan;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t block = 1 + data[0] % 64 * 32;  // 1 to 2017 bytes
  // None, or a head and tail shorter or longer than a line or than the text: the backward
  // reading searches the tail first.
  const std::size_t kEnds[] = {0, 7, 300, 5000}, ends = kEnds[data[0] / 64];
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::vector<std::string> entries = line_reader_entries(bytes);
  if (count_log_entries(bytes) != entries.size()) __builtin_trap();
  const SpEnerResult got = scan_sp_ener(bytes, 1);
  const SpEnerResult expected = reference_scan(entries);
  if (got.status != expected.status || got.line != expected.line) __builtin_trap();
  // The same bits: a field such as "nan" converts to a NaN that equals nothing.
  if (std::memcmp(&got.hartree, &expected.hartree, sizeof got.hartree) != 0) __builtin_trap();
  for (const bool forward : {false, true}) {
    const LogScan scan = scan_as_file(bytes, forward, block, ends);
    if (scan.format != TextFormat::plain) return 0;  // bytes that begin as a compressed stream
    if (scan.status != LogReadStatus::ok || scan.energy_entry != expected.line ||
        scan.marker_found != (expected.status != SpEnerStatus::marker_not_found) ||
        scan.entry_count != (forward ? entries.size() : 0) || scan.head != bytes.substr(0, ends) ||
        scan.tail != bytes.substr(bytes.size() - std::min(bytes.size(), ends))) {
      __builtin_trap();
    }
  }
  return 0;
}
