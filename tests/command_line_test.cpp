// The options both programs match: what the recorded runs do not show, the energy job's reading
// of -json.
#include "command_line.h"

#include <gtest/gtest.h>

namespace {

// The checker's own options: the energy job takes them for unknown words. -json matches by its
// beginning as the job's options do, the GNU-style ones only whole.
TEST(CommandLine, TheCheckersOwnOptions) {
  const struct {
    const char* arg;
    Option check, job;
  } cases[] = {
      {"-json", Option::json, Option::none},        {"-jsonl", Option::json, Option::none},
      {"--json", Option::json, Option::none},       {"--jsonx", Option::none, Option::none},
      {"--version", Option::version, Option::none}, {"--versions", Option::none, Option::none},
      {"--help", Option::help, Option::help}};
  for (const auto& c : cases) {
    EXPECT_EQ(match_option(c.arg, true), c.check) << c.arg;
    EXPECT_EQ(match_option(c.arg, false), c.job) << c.arg;
  }
}

}  // namespace
