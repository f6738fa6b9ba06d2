// The energy job's driver: what its recorded runs cannot show, the line store released.
#include "driver.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "log_store.h"
#include "test_files.h"

namespace {

// The driver releases each output's store once its energy is taken, the last one too.
TEST(LineStore, TheBatchLeavesNoStoreBehind) {
  const std::string log =
      write_temp("head\n SCF Done:  E(X) =  -7.25  A.U.\n" + std::string(99, 'x'));
  std::FILE* batch = std::tmpfile();
  ASSERT_NE(batch, nullptr);
  std::fprintf(batch, "1\n%s %s %s\n", log.c_str(), log.c_str(), log.c_str());
  std::rewind(batch);
  EXPECT_EQ(read_batch_jobs(batch, "jobs", 1).U_nM.at(0), -7.25 * hartree_to_meV);
  std::fclose(batch);
  EXPECT_TRUE(g_log_data.energy_entry.empty() && g_log_data.tail.empty());
}

}  // namespace
