// Tests of mmutil's path, file-system, date and table-output routines, each in a fresh
// temporary directory that is also the working directory.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "mmutil/text.h"

namespace fs = std::filesystem;
namespace mmutil {
namespace {

std::string read_file(const fs::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

class InTempDir : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "mmutil_test.XXXXXX").string();
    dir_ = mkdtemp(pattern.data());
    old_ = fs::current_path();
    fs::current_path(dir_);
  }
  void TearDown() override {
    fs::current_path(old_);
    fs::remove_all(dir_);
  }
  fs::path dir_, old_;
};

TEST(Paths, TakeNamesApartAtTheirOwnSeparators) {
  const std::pair<const char*, const char*> bases[] = {
      {"dir/sub/file.txt", "file.txt"}, {"dir\\file", "file"}, {"file", "file"}, {"dir/", ""}};
  for (const auto& [path, base] : bases) EXPECT_EQ(base_filename(path), base) << path;
  const std::pair<const char*, const char*> stems[] = {{"a.b.c", "a.b"},
                                                       {"file.", "file"},
                                                       {"file", "file"},
                                                       {".profile", ""},
                                                       {"run.d/input", "run"}};
  for (const auto& [name, stem] : stems) EXPECT_EQ(remove_filename_extension(name), stem) << name;
  char both[] = "a/b\\c", back[] = "a\\b/c";
  ReplaceSlashWithUnderscore(both);
  ReplaceBackSlashWithSlash(back);
  EXPECT_STREQ(both, "a_b_c");
  EXPECT_STREQ(back, "a/b/c");
}

TEST_F(InTempDir, FileSystemTestsAndDirectories) {
  std::ofstream("plain") << "x";
  fs::permissions("plain", fs::perms(0701));  // a regular file's mode bits are no type bits
  EXPECT_EQ(create_directory("plain"), 0);    // anything already there counts
  EXPECT_EQ(create_directory("missing/sub"), -1);
  const mode_t mask = umask(0);
  ASSERT_EQ(create_directory("made"), 0);
  umask(mask);
  EXPECT_EQ(fs::status("made").permissions(), fs::perms(0750));
  fs::create_symlink("loop", "loop");  // neither a directory nor absent: stat fails otherwise
  const std::pair<const char*, int> dirs[] = {{"made", 1},    {"plain", 0},     {"absent", 0},
                                              {"plain/x", 0}, {"/dev/null", 0}, {"loop", -1}};
  for (const auto& [path, expected] : dirs) EXPECT_EQ(dir_exists(path), expected) << path;
  // The directory test is one mode bit, which a socket's type shares.
  sockaddr_un socket_name{AF_UNIX, "sock"};
  const int sock = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(sock, reinterpret_cast<sockaddr*>(&socket_name), sizeof socket_name), 0);
  EXPECT_EQ(dir_exists("sock"), 1);
  close(sock);
  EXPECT_TRUE(fileExist("made"));
  EXPECT_FALSE(fileExist("absent"));
  EXPECT_EQ(file_exists("plain"), 1);
  EXPECT_EQ(file_exists("made/absent"), 0);
  EXPECT_EQ(file_exists(nullptr), 0);
  std::string workdir;
  get_workdir(workdir);
  EXPECT_EQ(workdir, fs::current_path().string());
}

TEST_F(InTempDir, BackupMovesTheFileAsideWhateverItsName) {
  EXPECT_EQ(backup_file("absent"), 0);
  EXPECT_FALSE(fileExist("absent#"));
  for (const std::string name : {"data.txt", "it's a $(file); x", "-n"}) {
    std::ofstream(name) << name;
    EXPECT_EQ(backup_file(name.c_str()), 0) << name;
    EXPECT_FALSE(fileExist(name.c_str())) << name;
    EXPECT_EQ(read_file(name + "#"), name);
  }
}

TEST_F(InTempDir, GlobListsMatchesSorted) {
  for (const char* name : {"b.log", "a.log", "c.dat"}) std::ofstream{name};
  EXPECT_EQ(globFileVector("*.log"), (std::vector<std::string>{"a.log", "b.log"}));
  EXPECT_EQ(globFileVector("*.none"), std::vector<std::string>{});
  EXPECT_EQ(globFileVector("{a,b}.log"), std::vector<std::string>{});  // no brace expansion
}

TEST(Dates, FormatsDayUnpaddedAndTimePadded) {
  const struct {
    int weekday, month;
    const char* text;
  } cases[] = {{4, 2, "Thu Mar 5 09:07:03 2026"},  {0, 11, "Sun Dec 5 09:07:03 2026"},
               {7, 2, "??? ??? 5 09:07:03 2026"},  {-1, 2, "??? ??? 5 09:07:03 2026"},
               {4, 12, "??? ??? 5 09:07:03 2026"}, {4, -1, "??? ??? 5 09:07:03 2026"}};
  for (const auto& c : cases) {
    std::tm t{};
    t.tm_year = 2026 - 1900;
    t.tm_mday = 5;
    t.tm_hour = 9;
    t.tm_min = 7;
    t.tm_sec = 3;
    t.tm_wday = c.weekday;
    t.tm_mon = c.month;
    char text[32];
    EXPECT_EQ(format_date_time(t, text), 23);
    EXPECT_STREQ(text, c.text);
  }
  int month = 0, day = 0, year = 0;
  get_date(&month, &day, &year);
  EXPECT_TRUE(month >= 1 && month <= 12 && day >= 1 && day <= 31 && year >= 2024);
  EXPECT_EQ(std::string(get_now_date_time()).find(std::to_string(year)), 20u - (day < 10));
}

// The local time follows TZ when the program changes it: zones 26 hours apart never share
// a date, and zones 12 hours apart differ by 12 on the clock.
TEST(Dates, FollowTheTimeZoneSet) {
  const auto date_in = [](const char* zone) {
    setenv("TZ", zone, 1);
    int month = 0, day = 0, year = 0;
    get_date(&month, &day, &year);
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
  };
  const auto clock_in = [](const char* zone) {
    setenv("TZ", zone, 1);
    const std::string text = get_now_date_time();
    const std::size_t hour = text.find(':') - 2;
    return std::stoi(text.substr(hour, 2)) * 60 + std::stoi(text.substr(hour + 3, 2));
  };
  EXPECT_NE(date_in("<-12>12"), date_in("<+14>-14"));
  int apart = 0;
  for (int attempt = 0; attempt < 3 && apart != 12 * 60; ++attempt) {  // a minute may turn
    apart = (clock_in("<+12>-12") - clock_in("UTC0") + 24 * 60) % (24 * 60);
  }
  EXPECT_EQ(apart, 12 * 60);
  unsetenv("TZ");
}

TEST_F(InTempDir, TablesHaveTheirFixedLayouts) {
  const double r0[] = {1, -2, 3.5, 0}, r1[] = {4, 5, 6, 7}, r2[] = {0.125, 8, 9, 10};
  const double* rows[] = {r0, r1, r2};
  EXPECT_EQ(output_matrix(rows, 3, 2, "m.txt"), 0);
  EXPECT_EQ(read_file("m.txt"),
            "                    0            1\n"
            "      0       1.00000000  -2.00000000\n"
            "      1       4.00000000   5.00000000\n"
            "      2       0.12500000   8.00000000\n"
            "                    2\n"
            "      0       3.50000000\n"
            "      1       6.00000000\n"
            "      2       9.00000000\n");
  output_matrix(rows, 0, 2, "empty.txt");
  EXPECT_EQ(read_file("empty.txt"), "");

  const struct {
    int n, w;
    const char* text;
  } vectors[] = {
      {4, 2, "     1.0000000    -2.0000000\n     3.5000000     0.0000000\n\n"},
      {3, 2, "     1.0000000    -2.0000000\n     3.5000000\n"},
      {0, 2, "\n"},
  };
  for (const auto& v : vectors) {
    output_vector(r0, v.n, v.w, "v.txt");
    EXPECT_EQ(read_file("v.txt"), v.text) << v.n << " by " << v.w;
  }

  testing::internal::CaptureStdout();
  output_vvector({{1, 2, 3}, {4, 5}}, "vv.txt");  // only the rows both columns have
  output_vvector({}, "none.txt");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "ncols = 2\nnrows = 2\nncols = 0\nnrows = 0\n");
  EXPECT_EQ(read_file("vv.txt"),
            "      1.0000000      4.0000000\n      2.0000000      5.0000000\n");
  EXPECT_EQ(read_file("none.txt"), "");
}

// The report goes to standard output; the death tests read it on standard error.
TEST_F(InTempDir, TableWritersEndTheRunWithStatusOne) {
  const double v[] = {1};
  const double* rows[] = {v};
  const char* const cannot_create =
      "^\nERROR  transport : mmutil : line [0-9]+ : \nFailed to create file absent/t.txt\n$";
  EXPECT_EXIT((dup2(2, 1), output_matrix(rows, 1, 1, "absent/t.txt")), testing::ExitedWithCode(1),
              cannot_create);
  EXPECT_EXIT((dup2(2, 1), output_vector(v, 1, 1, "absent/t.txt")), testing::ExitedWithCode(1),
              cannot_create);
  EXPECT_EXIT((dup2(2, 1), output_vvector({{1}}, "absent/t.txt")), testing::ExitedWithCode(1),
              cannot_create);
  EXPECT_EXIT((dup2(2, 1), output_matrix(rows, 1, 0, "t.txt")), testing::ExitedWithCode(1),
              "mmutil : line [0-9]+ : \nColumns per block must be at least 1, not 0, for t.txt");
  EXPECT_EXIT((dup2(2, 1), output_vector(v, 1, -1, "t.txt")), testing::ExitedWithCode(1),
              "Values per line must be at least 1, not -1, for t.txt");
  EXPECT_FALSE(fileExist("t.txt"));
}

}  // namespace
}  // namespace mmutil
