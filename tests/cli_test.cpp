// Black-box tests of get_inter_ener: each case runs the built tool in a fresh directory and
// compares its standard output, standard error, exit status and files byte for byte.
//
// Recorded cases live in tests/cli/<case>/: `args` (one argument per line), optional `argv0`,
// `in/` (the directory before the run), `stdout`, `stderr`, `status` (absent: empty, empty,
// 0) and `out/` (every file the run creates or changes).
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

#include "tool_runner.h"

namespace {

const fs::path kCaseRoot = CLI_CASES_DIR;

std::vector<std::string> read_lines(const fs::path& path) {
  std::vector<std::string> lines;
  std::istringstream in(read_file(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Copies the files of `from` into `to`, keeping subdirectories, except those named `skip`.
void copy_inputs(const fs::path& from, const fs::path& to, const std::string& skip = "") {
  if (!fs::exists(from)) return;
  for (const auto& entry : fs::directory_iterator(from)) {
    if (entry.path().filename() == skip) continue;
    fs::copy(entry.path(), to / entry.path().filename(), fs::copy_options::recursive);
  }
}

// Runs the tool in a copy of `in_dir` and checks that the directory afterwards holds the
// inputs overlaid by the files of `out_dir`, and nothing else.
ToolRun run_and_check_files(const fs::path& in_dir, const fs::path& out_dir,
                            const std::vector<std::string>& args,
                            const std::string& argv0 = "get_inter_ener",
                            const std::string& skip = "") {
  const fs::path work = make_temp_dir();
  copy_inputs(in_dir, work, skip);
  std::map<std::string, std::string> expected = read_tree(work);
  for (auto& [name, bytes] : read_tree(out_dir)) expected[name] = bytes;
  const ToolRun run = run_tool(work, argv0, args);
  const std::map<std::string, std::string> actual = read_tree(work);
  for (const auto& [name, bytes] : expected) {
    const auto found = actual.find(name);
    if (found == actual.end()) {
      ADD_FAILURE() << "missing file " << name;
    } else {
      EXPECT_EQ(found->second, bytes) << "in file " << name;
    }
  }
  for (const auto& [name, bytes] : actual) {
    EXPECT_TRUE(expected.count(name)) << "unexpected file " << name << ":\n" << bytes;
  }
  fs::remove_all(work);
  return run;
}

std::vector<std::string> recorded_cases() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(kCaseRoot)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class RecordedCase : public testing::TestWithParam<std::string> {};

TEST_P(RecordedCase, MatchesRecordedRun) {
  const fs::path dir = kCaseRoot / GetParam();
  const std::string argv0 =
      fs::exists(dir / "argv0") ? read_lines(dir / "argv0").at(0) : "get_inter_ener";
  const std::string status = fs::exists(dir / "status") ? read_lines(dir / "status").at(0) : "0";
  const ToolRun run = run_and_check_files(dir / "in", dir / "out", read_lines(dir / "args"), argv0);
  EXPECT_EQ(std::to_string(run.status), status);
  EXPECT_EQ(mask_report_lines(run.out), read_file(dir / "stdout"));
  EXPECT_EQ(mask_report_lines(run.err), read_file(dir / "stderr"));
}

INSTANTIATE_TEST_SUITE_P(Cli, RecordedCase, testing::ValuesIn(recorded_cases()),
                         [](const testing::TestParamInfo<std::string>& info) {
                           std::string name = info.param;
                           for (char& c : name)
                             c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                           return name;
                         });

// The example crystal shipped with the tool gives the tables recorded beside it.
TEST(Cli, ExampleCrystalGivesRecordedTables) {
  const fs::path examples = EXAMPLES_DIR;
  const ToolRun run = run_and_check_files(examples, examples / "expected",
                                          {"-batch", "int_ener_files.dat", "-neighbor"},
                                          "get_inter_ener", "expected");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "Treating batch file: int_ener_files.dat...\n"
            "Write lattice site internal energies... \n");
  EXPECT_EQ(run.err, "");
}

// From the hundredth site on, the per-site files take three digits.
TEST(Cli, HundredSitesNameThreeDigitFiles) {
  const fs::path work = make_temp_dir();
  const std::string log = " header\n SCF Done:  E(RB3LYP) =  -1.000000000     A.U.\n";
  for (const char* name : {"a.log", "c.log", "n.log"}) write_file(work / name, log);
  std::string batch = "100\n";
  std::string neighbors = "sites\nof the cell\n100\n";
  for (int s = 1; s <= 100; ++s) {
    batch += "a.log c.log n.log\n";
    neighbors += std::to_string(s) + "\n1\n" + std::to_string(s % 100 + 1) + "\n";
  }
  write_file(work / "int_ener_files.dat", batch);
  write_file(work / "neighbor.dat", neighbors);

  const ToolRun run = run_tool(work, "get_inter_ener", {"-neighbor"});
  EXPECT_EQ(run.status, 0) << run.out;
  const auto files = read_tree(work);
  for (const char* name :
       {"EH01.dat", "EH09.dat", "EH10.dat", "EH99.dat", "EH100.dat", "EL100.dat"}) {
    ASSERT_TRUE(files.count(name)) << name;
  }
  EXPECT_EQ(files.at("EL100.dat"), "1\n0.000000            \n# in meV\n");
  EXPECT_EQ(files.size(), 3u + 2u + 1u + 200u);  // logs, inputs, uc_U.dat, per-site files
  fs::remove_all(work);
}

// A negative job or neighbour count ends the run with the standard failure of an array of
// negative length, after the lines already printed have reached the terminal.
TEST(Cli, NegativeCountsAbortAsNegativeArrays) {
  const std::string log = " header\n SCF Done:  E(RB3LYP) =  -1.000000000     A.U.\n";
  struct Case {
    const char* batch;
    const char* neighbors;
    const char* out;
  } const cases[] = {
      {"-1\n", "", "Treating batch file: int_ener_files.dat...\n"},
      {"1\na.log a.log a.log\n", "a\nb\n1\n1\n-2\n",
       "Treating batch file: int_ener_files.dat...\nWrite lattice site internal energies... \n"},
  };
  for (const Case& c : cases) {
    const fs::path work = make_temp_dir();
    write_file(work / "a.log", log);
    write_file(work / "int_ener_files.dat", c.batch);
    write_file(work / "neighbor.dat", c.neighbors);
    const ToolRun run = run_tool(work, "get_inter_ener", {"-neighbor"});
    EXPECT_EQ(run.status, 128 + SIGABRT) << c.batch;
    EXPECT_EQ(run.out, c.out);
    EXPECT_NE(run.err.find("bad_array_new_length"), std::string::npos) << run.err;
    fs::remove_all(work);
  }
}

}  // namespace
