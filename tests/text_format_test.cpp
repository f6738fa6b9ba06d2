// Messages built before they are printed: an empty one is empty, without a stray NUL.
#include "text_format.h"

#include <gtest/gtest.h>

namespace {

TEST(TextFormat, EmptyMessageHasNoStrayNul) { EXPECT_EQ(format_text("%s", ""), ""); }

}  // namespace
