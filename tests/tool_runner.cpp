#include "tool_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

fs::path make_temp_dir() {
  std::string pattern = (fs::temp_directory_path() / "inter_ener_test.XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  return pattern;
}

ToolRun run_tool(const fs::path& dir, const std::string& argv0,
                 const std::vector<std::string>& args) {
  const fs::path capture = make_temp_dir();
  const std::string out_path = (capture / "stdout").string();
  const std::string err_path = (capture / "stderr").string();
  std::vector<char*> argv{const_cast<char*>(argv0.c_str())};
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  const pid_t pid = fork();
  if (pid == 0) {
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0 || chdir(dir.c_str()) != 0) {
      _exit(127);
    }
    execv(TOOL_PATH, argv.data());
    _exit(127);
  }
  int wait_status = 0;
  waitpid(pid, &wait_status, 0);
  ToolRun run{WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 128 + WTERMSIG(wait_status),
              read_file(out_path), read_file(err_path)};
  fs::remove_all(capture);
  return run;
}

std::string read_file(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void write_file(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::map<std::string, std::string> read_tree(const fs::path& dir) {
  std::map<std::string, std::string> files;
  if (!fs::exists(dir)) return files;
  for (const auto& entry : fs::recursive_directory_iterator(dir)) {
    if (entry.is_regular_file()) {
      files[fs::relative(entry.path(), dir).generic_string()] = read_file(entry.path());
    }
  }
  return files;
}

std::string mask_report_lines(const std::string& text) {
  static const std::regex line_number("(ERROR  transport : [^ ]+ : line )[0-9]+( : )");
  return std::regex_replace(text, line_number, "$1N$2");
}
