// Files and FIFOs of a test's own (ctest runs tests side by side, and other builds may run the
// same ones: names carry the test's name and the process id), and the reader run over them.
#ifndef GET_INTER_ENER_TEST_FILES_H
#define GET_INTER_ENER_TEST_FILES_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "log_reader.h"

// The number of open descriptors below 1024, to show that a reading closes what it opened.
inline int count_open_descriptors() {
  int open = 0;
  for (int fd = 0; fd < 1024; ++fd) open += fcntl(fd, F_GETFD) != -1;
  return open;
}

// The paths handed out by test_file_path(), removed (folders with what they hold) when the test
// program ends; a forked child that leaves by _exit leaves them to its parent.
struct TestFiles {
  std::vector<std::string> paths;
  ~TestFiles() {
    std::error_code ignored;
    for (const std::string& path : paths) std::filesystem::remove_all(path, ignored);
  }
};

// A path in the temporary directory named after the running test, ending in `suffix`; removed
// when the test program ends.
inline std::string test_file_path(const std::string& suffix) {
  static TestFiles made;
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  std::string id = std::string(test.test_suite_name()) + "." + test.name() + "." +
                   std::to_string(getpid()) + suffix;
  std::replace(id.begin(), id.end(), '/', '_');  // the parameter in a parameterised test's name
  made.paths.push_back(testing::TempDir() + id);
  return made.paths.back();
}

inline std::string write_temp(const std::string& bytes, const std::string& suffix = ".log") {
  const std::string path = test_file_path(suffix);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

// Reads `path`: forward, counting entries, when `count` is set, else backward from the end;
// with blocks of `block` bytes, keeping `ends` bytes of head and tail.
inline LogScan scan_path(const std::string& path, bool count, std::size_t block, std::size_t ends) {
  LogScanOptions options;
  options.count_entries = options.count_markers = count;
  options.block_bytes = block;
  options.head_bytes = options.tail_bytes = ends;
  LogScan scan;
  scan_log_file(path.c_str(), options, scan);
  return scan;
}

// Reads `bytes`, in blocks of `chunk`, through a FIFO that a child fills `chunk` bytes at a time:
// a pipe has no length, and may deliver even a format header a few bytes at a time. Unless the
// reading is expected to stop early (`stops_early`: a stream refused at its header), the writer
// must have written everything, so the reader read to the end.
inline LogScan scan_through_fifo(const std::string& bytes, std::size_t chunk, std::size_t ends,
                                 bool stops_early = false) {
  const std::string path = test_file_path(".fifo");
  unlink(path.c_str());
  EXPECT_EQ(mkfifo(path.c_str(), 0600), 0) << path;  // without it, the reading fails to open
  const pid_t writer = fork();
  if (writer == 0) {
    const int fd = open(path.c_str(), O_WRONLY);
    bool written = fd >= 0;
    for (std::size_t at = 0; written && at < bytes.size(); at += chunk) {
      written = write(fd, bytes.data() + at, std::min(chunk, bytes.size() - at)) > 0;
    }
    _exit(written && close(fd) == 0 ? 0 : 1);
  }
  errno = EINTR;  // stale: only a failed call's errno may count
  const LogScan scan = scan_path(path, true, chunk, ends);
  int status = -1;
  waitpid(writer, &status, 0);
  // A reader that stops early closes the FIFO, and the writer may meet a broken pipe.
  EXPECT_TRUE(stops_early || status == 0) << "the writer ended with status " << status;
  unlink(path.c_str());
  return scan;
}

// The rows of the manifest of the real engine outputs in `dir` (MANIFEST.tsv, tab-separated,
// its line of column names left out), or none when the folder is absent.
inline std::vector<std::vector<std::string>> manifest_rows(const std::string& dir) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream manifest(dir + "/MANIFEST.tsv");
  std::string line;
  std::getline(manifest, line);  // column names
  while (std::getline(manifest, line)) {
    std::vector<std::string>& cells = rows.emplace_back();
    std::istringstream fields(line);
    for (std::string cell; std::getline(fields, cell, '\t');) cells.push_back(cell);
  }
  return rows;
}

#endif  // GET_INTER_ENER_TEST_FILES_H
