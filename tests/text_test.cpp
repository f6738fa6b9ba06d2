// Tests of mmutil's C-string tokenizing and trimming routines.
#include "mmutil/text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace mmutil {
namespace {

using Tokens = std::vector<std::string>;

TEST(Tokenize, SplitsAtRunsOfDelimitersOnly) {
  struct Case {
    const char* text;
    const char* delimiters;
    Tokens expected;
  } const cases[] = {
      {"  a  b ", " ", {"a", "b"}},
      {"SCF Done:  E(RB3LYP) =  -1.5     A.U.",
       " ",
       {"SCF", "Done:", "E(RB3LYP)", "=", "-1.5", "A.U."}},
      {"a\tb c", " ", {"a\tb", "c"}},  // a tab is not a blank here
      {"x,,y;z", ",;", {"x", "y", "z"}},
      {"abc", "", {}},  // no delimiter can end a token
      {"   ", " ", {}},
  };
  for (const Case& c : cases) {
    Tokens tokens{"stale"};
    EXPECT_TRUE(tokenize(tokens, c.text, c.delimiters)) << c.text;
    EXPECT_EQ(tokens, c.expected) << c.text;
    EXPECT_TRUE(tokenize(tokens, std::string(c.text), c.delimiters)) << c.text;
    EXPECT_EQ(tokens, c.expected) << c.text;
  }
}

TEST(Tokenize, RejectsNullAndTheStringFormRejectsEmptyText) {
  Tokens tokens{"stale"};
  EXPECT_TRUE(tokenize(tokens, "", " "));
  EXPECT_TRUE(tokens.empty());
  tokens = {"stale"};
  EXPECT_FALSE(tokenize(tokens, std::string(), " "));
  EXPECT_TRUE(tokens.empty());
  tokens = {"stale"};
  EXPECT_FALSE(tokenize(tokens, static_cast<const char*>(nullptr), " "));
  EXPECT_TRUE(tokens.empty());
  EXPECT_FALSE(tokenize(tokens, "a b", nullptr));
  EXPECT_FALSE(tokenize(tokens, std::string("a b"), nullptr));
}

TEST(Trim, EachSideKeepsItsOwnBlanksAndTheFirstCharacter) {
  struct Case {
    void (*trim)(char*);
    const char* name;
    const char* text;
    const char* expected;
  } const cases[] = {
      {c_trim, "c_trim", "  abc \t\r\n", "abc"},
      {c_trim, "c_trim", " ", ""},
      {c_trim, "c_trim", "  ", ""},
      {c_trim, "c_trim", "\t\n", "\n"},  // the left side does not remove a line feed
      {c_trim, "c_trim", "  \r\n", "\r"},
      {c_trim, "c_trim", "a b", "a b"},
      {c_triml, "c_triml", "\t  abc \n", "abc \n"},
      {c_triml, "c_triml", "\nabc", "\nabc"},
      {c_trimr, "c_trimr", "  ", " "},  // position 0 is never cleared
      {c_trimr, "c_trimr", " ", " "},
      {c_trimr, "c_trimr", " ab \t\r\n", " ab"},
      {c_trimr, "c_trimr", "ab\v", "ab\v"},
  };
  for (const Case& c : cases) {
    std::string buffer = c.text;
    c.trim(buffer.data());
    EXPECT_STREQ(buffer.c_str(), c.expected) << c.name << " of \"" << c.text << "\"";
  }
  c_trim(nullptr);
  c_triml(nullptr);
  c_trimr(nullptr);
}

TEST(Strhed, SplitsOffTheHeadWord) {
  struct Case {
    const char* text;
    const char* head;
    const char* rest;
  } const cases[] = {
      {"  key   value  ", "key", "value"},
      {"key", "key", ""},
      {"  \t ", "", ""},
      {"\nkey\tv1 v2\r\n", "key", "v1 v2"},
      {"a\rb c", "a\rb", "c"},        // a carriage return is part
                                      // of a word
      {"k \b\vrest\f", "k", "rest"},  // the remainder drops codes 8 to 13
  };
  for (const Case& c : cases) {
    std::string buffer = c.text;
    char* cursor = buffer.data();
    EXPECT_STREQ(strhed(&cursor), c.head) << c.text;
    EXPECT_STREQ(cursor, c.rest) << c.text;
  }
}

TEST(CountLines, CountsLineFeedsAndCarriageReturns) {
  const std::string path = testing::TempDir() + "mmutil_count_lines.txt";
  const struct {
    const char* bytes;
    int expected;
  } cases[] = {{"a\r\nb\r\nc\r\n", 6}, {"a\nb", 1}, {"", 0}};
  for (const auto& c : cases) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fputs(c.bytes, file);
    std::fclose(file);
    EXPECT_EQ(count_lines(path.c_str()), c.expected) << c.bytes;
  }
  std::remove(path.c_str());
  EXPECT_EXIT(count_lines("no/such/file"), testing::ExitedWithCode(255),
              "");  // the message goes to standard output
}

TEST(MyStrcasestr, ComparesTheFirstNCharactersIgnoringCase) {
  EXPECT_EQ(my_strcasestr("ABC", "abd", 2), 1);
  EXPECT_EQ(my_strcasestr("ABC", "abd", 3), 0);
  EXPECT_EQ(my_strcasestr("x", "y", 0), 1);
  EXPECT_EQ(my_strcasestr("ab", "AB", 10), 1);  // both end together
  EXPECT_EQ(my_strcasestr("ab", "abc", 3), 0);
}

TEST(MorphNumericString, CutsDecimalsAndTrailingZeros) {
  struct Case {
    const char* number;
    int digits;
    const char* expected;
    int last;  // index the result points at
  } const cases[] = {
      {"1.2345", 2, "1.23", 3}, {"1.500", 2, "1.5", 2}, {"2.000", 2, "2", 1},  {"3.", 2, "3", 1},
      {"7.9", 0, "7", 1},       {"10.00", 3, "10", 2},  {"100.5", -1, "1", 0}, {"2.0", -1, "2", 0},
      {"0.5", -1, "0", 0},      {".5", -1, "", 0},      {"000.5", -2, "0", 0},
  };
  for (const Case& c : cases) {
    std::string buffer = c.number;
    const char* last = morphNumericString(buffer.data(), c.digits);
    EXPECT_STREQ(buffer.c_str(), c.expected) << c.number << " with " << c.digits;
    EXPECT_EQ(last - buffer.data(), c.last) << c.number << " with " << c.digits;
  }
  std::string integer = "120";
  EXPECT_EQ(morphNumericString(integer.data(), 2), nullptr);
  EXPECT_EQ(integer, "120");
}

}  // namespace
}  // namespace mmutil
