// The list readers' contents, which the tables do not all show (the recorded runs show the rest:
// counts, limits, faults and their messages).
#include "input_lists.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// The lists hold what their counts say: one trimmed line per job, however many lines follow;
// each site's own number, minus 1, though it takes no part in the tables.
TEST(InputLists, HoldWhatTheirCountsSay) {
  std::FILE* batch = std::tmpfile();
  std::FILE* neighbors = std::tmpfile();
  ASSERT_TRUE(batch != nullptr && neighbors != nullptr);
  std::fputs("2\n a \nb\nc\n", batch);
  std::fputs("a\nb\n2\n7\n0\n-3\n0\n", neighbors);
  std::rewind(batch);
  std::rewind(neighbors);
  BatchList list;
  EXPECT_EQ(read_batch_list(batch, list), ListStatus::ok);
  EXPECT_EQ(list.job_lines, (std::vector<std::string>{"a", "b"}));
  NeighborTable table;
  ListFault fault;
  EXPECT_EQ(read_neighbor_list(neighbors, 2, table, fault), ListStatus::ok);
  EXPECT_EQ(table.root_mol_id, (std::vector<int>{6, -4}));
  std::fclose(batch);
  std::fclose(neighbors);
}

}  // namespace
