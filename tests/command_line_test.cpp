// The options both programs match: what the recorded runs do not show, the energy job's reading
// of -json.
#include "command_line.h"

#include <gtest/gtest.h>

namespace {

// -json is the checker's only option of its own: the energy job takes it for an unknown word.
TEST(CommandLine, JsonIsTheCheckersOnly) {
  EXPECT_EQ(match_option("-json", true), Option::json);
  EXPECT_EQ(match_option("-json", false), Option::none);
}

}  // namespace
