// The JSON document's strings and numbers at their limits; the documents themselves are in the
// recorded check_json_* runs.
#include "check_report.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(CheckReport, JsonStringsAndNumbers) {
  EXPECT_EQ(json_string("a\"b\\c\n\t\x01\xc3\xa9"), "\"a\\\"b\\\\c\\n\\t\\u0001\xc3\xa9\"");
  EXPECT_EQ(json_string("\r\b\f\x1f "), "\"\\r\\b\\f\\u001f \"");
  // Bytes that are not well-formed UTF-8 stand for themselves as \u00XX; characters stay.
  EXPECT_EQ(json_string("\xff\xc3(\xed\xa0\x80\x7f\xe6\xb0\xb4"),
            "\"\\u00ff\\u00c3(\\u00ed\\u00a0\\u0080\\u007f\xe6\xb0\xb4\"");
  EXPECT_EQ(shortest_number(-693.329689346), "-693.329689346");
  EXPECT_EQ(shortest_number(0.1), "0.1");
  EXPECT_EQ(std::strtod(shortest_number(1.0 / 3).c_str(), nullptr), 1.0 / 3);
  EXPECT_EQ(shortest_number(0.30000000000000004), "0.30000000000000004");  // 17 digits
  EXPECT_EQ(shortest_number(4.9406564584124654e-324), "5e-324");           // the least subnormal
  EXPECT_EQ(shortest_number(1e-310), "1e-310");
}

}  // namespace
