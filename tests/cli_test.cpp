// Black-box tests of the suite's programs: each recorded case (tests/cli/README.md) runs a built
// program in a fresh directory and compares its output, status and files byte for byte.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;
namespace {

using Files = std::map<std::string, std::string>;

struct ToolRun {
  int status;  // exit status, or 128 + signal number as a shell reports it
  std::string out, err;
};

std::string read_file(const fs::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

fs::path make_temp_dir() {
  std::string pattern = (fs::temp_directory_path() / "inter_ener_test.XXXXXX").string();
  return mkdtemp(pattern.data());
}

// Every regular file below `dir`, by relative path.
Files read_tree(const fs::path& dir) {
  Files files;
  if (!fs::exists(dir)) return files;
  for (const auto& entry : fs::recursive_directory_iterator(dir)) {
    if (entry.is_regular_file()) files[fs::relative(entry, dir).string()] = read_file(entry);
  }
  return files;
}

// The built programs, by name.
const std::map<std::string, std::string> kTools = {{"get_inter_ener", TOOL_PATH},
                                                   {"check_inter_ener", CHECK_TOOL_PATH},
                                                   {"site_energies", SITE_ENERGIES_PATH}};

// Runs the program `tool` in `dir`, with files limited to `file_size_limit` bytes when it is
// not negative, and standard input closed when `stdin_closed` is set.
ToolRun run_tool(const fs::path& dir, std::string argv0, std::vector<std::string> args,
                 const std::string& stdout_path, const std::string& tool, long file_size_limit,
                 bool stdin_closed) {
  const std::string tool_path = kTools.at(tool);
  const fs::path capture = make_temp_dir();
  const std::string out_path = stdout_path.empty() ? (capture / "out").string() : stdout_path;
  std::vector<char*> argv{argv0.data()};
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  int reader_gone[2];
  if (pipe2(reader_gone, O_CLOEXEC) != 0) return {-1, "", "pipe failed"};  // fd 1 is a copy
  close(reader_gone[0]);
  if (fork() == 0) {
    const int out =
        out_path == "|closed" ? reader_gone[1] : open(out_path.c_str(), O_WRONLY | O_CREAT, 0644);
    const int err = open((capture / "err").c_str(), O_WRONLY | O_CREAT, 0644);
    const rlimit limit{static_cast<rlim_t>(file_size_limit), static_cast<rlim_t>(file_size_limit)};
    if (dup2(out, 1) >= 0 && dup2(err, 2) >= 0 && chdir(dir.c_str()) == 0 &&
        (file_size_limit < 0 || setrlimit(RLIMIT_FSIZE, &limit) == 0) &&
        (!stdin_closed || close(0) == 0)) {
      execv(tool_path.c_str(), argv.data());
    }
    _exit(127);
  }
  close(reader_gone[1]);
  int status = 0;
  wait(&status);
  ToolRun run{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
              read_file(capture / "out"), read_file(capture / "err")};
  fs::remove_all(capture);
  return run;
}

std::vector<std::string> read_lines(const fs::path& path) {
  std::vector<std::string> lines;
  std::istringstream in(read_file(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Writes the inputs that `generate` lists ("NAME SIZE CHAR") into `work`.
void generate_inputs(const fs::path& generate, const fs::path& work) {
  if (!fs::exists(generate)) return;
  for (const std::string& line : read_lines(generate)) {
    std::istringstream fields(line);
    std::string name;
    std::size_t size = 0;
    char fill = 0;
    fields >> name >> size >> fill;
    std::ofstream(work / name, std::ios::binary) << std::string(size, fill);
  }
}

// Runs the tool in a copy of the case's `in/` and checks that the directory afterwards holds
// exactly the inputs overlaid by the files of its `out/`.
ToolRun run_and_check_files(const fs::path& dir, const std::vector<std::string>& args,
                            const std::string& argv0, const std::string& stdout_path,
                            const std::string& tool, long file_size_limit) {
  const fs::path work = make_temp_dir();
  if (fs::exists(dir / "in")) {
    fs::copy(fs::canonical(dir / "in"), work,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  }
  generate_inputs(dir / "generate", work);
  Files expected = read_tree(work);
  for (auto& [name, bytes] : read_tree(dir / "out")) expected[name] = bytes;
  const ToolRun run = run_tool(work, argv0, args, stdout_path, tool, file_size_limit,
                               fs::exists(dir / "stdin_closed"));
  EXPECT_EQ(read_tree(work), expected);
  fs::remove_all(work);
  return run;
}

std::vector<std::string> recorded_cases() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(CLI_CASES_DIR)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The compressed formats this build of the tool reads, as CMake found their libraries.
const std::string kFormatsRead = "," FORMATS_READ ",";

class RecordedCase : public testing::TestWithParam<std::string> {};

TEST_P(RecordedCase, MatchesRecordedRun) {
  const fs::path dir = fs::path(CLI_CASES_DIR) / GetParam();
  for (const std::string& format :
       fs::exists(dir / "requires") ? read_lines(dir / "requires") : std::vector<std::string>{}) {
    if (format[0] == '/') {  // a file of the machine that the run reads, as a sysfs file
      if (!fs::exists(format)) GTEST_SKIP() << "it reads " << format << ", absent here";
      continue;
    }
    const bool without = format[0] == '!';  // "!zstd": the run of a build without zstd
    const std::string name = format.substr(without);
    if ((kFormatsRead.find("," + name + ",") != std::string::npos) == without) {
      GTEST_SKIP() << (without
                           ? "it shows a build without " + name + ", which this build reads"
                           : "its inputs are " + name + " data, which this build does not read");
    }
  }
  const auto first_line = [&](const char* name, const char* absent) {
    return fs::exists(dir / name) ? read_lines(dir / name).at(0) : std::string(absent);
  };
  const std::string tool = first_line("tool", "get_inter_ener");
  const ToolRun run = run_and_check_files(
      dir, read_lines(dir / "args"), first_line("argv0", tool.c_str()),
      first_line("stdout_path", ""), tool, std::stol(first_line("file_size_limit", "-1")));
  // The error header's line number follows the source; the recorded runs say N.
  const std::regex line_number("(ERROR  transport : [^ ]+ : line )[0-9]+");
  EXPECT_EQ(std::to_string(run.status), first_line("status", "0"));
  EXPECT_EQ(std::regex_replace(run.out, line_number, "$1N"), read_file(dir / "stdout"));
  EXPECT_EQ(std::regex_replace(run.err, line_number, "$1N"), read_file(dir / "stderr"));
}

INSTANTIATE_TEST_SUITE_P(Cli, RecordedCase, testing::ValuesIn(recorded_cases()),
                         [](const auto& info) { return info.param; });

}  // namespace
