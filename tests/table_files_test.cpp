// Writing a crystal's files: none left half-way, a table already right left alone (its inode
// kept), stale tables removed, a name taken by a directory refused before anything changes.
#include "table_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "test_files.h"

namespace fs = std::filesystem;

namespace {

ino_t inode(const char* name) {
  struct stat info {};
  return stat(name, &info) == 0 ? info.st_ino : 0;
}

std::size_t temporaries() {
  std::size_t n = 0;
  for (const auto& entry : fs::directory_iterator(".")) {
    n += entry.path().filename().string().find(".tmp.") != std::string::npos;
  }
  return n;
}

TEST(TableFiles, WrittenWholeOnceAndRefusedBeforeAChange) {
  const fs::path home = fs::current_path(), dir = test_file_path(".dir");
  fs::create_directories(dir);
  fs::current_path(dir);
  CrystalResult r;
  r.energies = {{-10, -20}, {-30, -40}, {-50, -60}};
  r.neighbors = {{1}, {0}};
  std::ofstream("EH09.dat") << "an earlier run's\n";
  std::string error;
  EXPECT_TRUE(write_crystal_files(r, {"EH09.dat"}, error)) << error;
  EXPECT_FALSE(fs::exists("EH09.dat"));
  const ino_t table = inode("uc_U.dat"), json = inode(kResultFile);
  ASSERT_NE(table, 0u);
  EXPECT_TRUE(write_crystal_files(r, {}, error));  // the same text: nothing replaced
  EXPECT_EQ(inode("uc_U.dat"), table);
  EXPECT_EQ(inode(kResultFile), json);
  r.energies.U_nM[0] = -51;  // a new energy: every table that shows it is replaced
  EXPECT_TRUE(write_crystal_files(r, {}, error));
  EXPECT_NE(inode("uc_U.dat"), table);
  const ino_t rewritten = inode("uc_U.dat");
  fs::remove("EL02.dat");
  fs::create_directory("EL02.dat");
  r.energies.U_nM[0] = -52;
  EXPECT_FALSE(write_crystal_files(r, {}, error));
  EXPECT_EQ(error, "cannot write EL02.dat: it is a directory");
  EXPECT_EQ(inode("uc_U.dat"), rewritten);  // the set as it was
  EXPECT_EQ(temporaries(), 0u);
  fs::current_path(home);
  fs::remove_all(dir);
}

}  // namespace
