// The routines over an output's text that every engine's reader shares: their edges.
#include "output_text.h"

#include <gtest/gtest.h>

namespace {

TEST(OutputText, LinesWordsAndNumbers) {
  EXPECT_EQ(trim(" \t-76.2 \r\n"), "-76.2");
  EXPECT_EQ(trim("  "), "");
  EXPECT_EQ(lines_of("a\r\nb\r").back(), "b");
  EXPECT_EQ(line_at("ab\ncd\r\nef", 4), "cd");
  EXPECT_EQ(line_at("ab\ncd", 0), "ab");
  EXPECT_EQ(last_line_with("E = 1\nE = 2\nF\n", "E ="), "E = 2");
  EXPECT_EQ(whole_lines("a\nb\nc"), "a\nb\n");
  EXPECT_EQ(whole_lines("abc"), "");
  // The last whole match at or before a place; a first character alone is none.
  for (const std::size_t before : {std::size_t{0}, std::size_t{4}, std::size_t{5}, npos}) {
    EXPECT_EQ(find_last("E= 1 E= 2E", "E=", before), std::string("E= 1 E= 2E").rfind("E=", before));
  }
  EXPECT_EQ(find_last("EE", "EEE"), npos);
  std::string_view line;
  std::string got;
  for (std::size_t pos = 0; next_line("ab\r\ncd\n\nef", pos, line);) got += std::string(line) + "|";
  EXPECT_EQ(got, "ab|cd||ef|");
  const struct {
    const char* text;
    bool read;
    double value;
  } numbers[] = {{" -76.25 ", true, -76.25}, {"-0.76D+02", true, -76.0}, {"1.5d-1", true, 0.15},
                 {"12a", false, 0.0},        {"", false, 0.0},           {"D+02", false, 0.0}};
  for (const auto& n : numbers) {
    double value = 0.0;
    EXPECT_EQ(read_number(n.text, value), n.read) << n.text;
    EXPECT_EQ(n.read ? value : 0.0, n.value) << n.text;
  }
  double value = 0.0;
  EXPECT_FALSE(read_number(std::string(65, '1'), value));  // no number is that long
  EXPECT_TRUE(number_after("Total DFT energy =   -76.4 au", 16, value));
  EXPECT_EQ(value, -76.4);
  EXPECT_FALSE(number_after("E", 5, value));
  EXPECT_TRUE(is_word("ENERGY:", "energy"));
}

}  // namespace
