// Opening an input: what the recorded runs cannot show, the descriptors left behind.
#include "input_file.h"

#include <gtest/gtest.h>

#include "test_files.h"

namespace {

// A directory named as an input is refused as a missing file is, its descriptor closed.
TEST(InputFile, ADirectoryIsRefusedWithoutADescriptorLeft) {
  struct stat info;
  const int descriptors = count_open_descriptors();
  EXPECT_EQ(open_input_fd(testing::TempDir().c_str(), info), -1);
  EXPECT_EQ(open_input_fd("no/such/file", info), -1);
  EXPECT_EQ(count_open_descriptors(), descriptors);
}

}  // namespace
