// Runs the built get_inter_ener as a user would, in a directory of its own, and reads back
// everything it leaves.
#ifndef TESTS_TOOL_RUNNER_H
#define TESTS_TOOL_RUNNER_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;

struct ToolRun {
  int status;  // exit status, or 128 + signal number
  std::string out;
  std::string err;
};

// A fresh empty directory under the system's temporary directory.
fs::path make_temp_dir();

// Runs the tool in `dir` with argument zero `argv0` and arguments `args`.
ToolRun run_tool(const fs::path& dir, const std::string& argv0,
                 const std::vector<std::string>& args);

std::string read_file(const fs::path& path);
void write_file(const fs::path& path, const std::string& bytes);

// Every regular file below `dir`, by relative path, with its bytes.
std::map<std::string, std::string> read_tree(const fs::path& dir);

// The error header's line number replaced by N, so that reports compare across edits.
std::string mask_report_lines(const std::string& text);

#endif  // TESTS_TOOL_RUNNER_H
