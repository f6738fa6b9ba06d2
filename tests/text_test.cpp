// Tests of mmutil's C-string tokenizing and trimming routines.
#include "mmutil/text.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>

namespace mmutil {
namespace {

using Tokens = std::vector<std::string>;

TEST(Tokenize, SplitsAtRunsOfTheGivenDelimitersOnly) {
  const std::tuple<const char*, const char*, Tokens> cases[] = {
      {"  a  b ", " ", {"a", "b"}},
      {" SCF Done:  E(RB3LYP) =  -1.5  A.U.",
       " ",
       {"SCF", "Done:", "E(RB3LYP)", "=", "-1.5", "A.U."}},
      {"a\tb c", " ", {"a\tb", "c"}},  // a tab is no blank here
      {"x,,y;z", ",;", {"x", "y", "z"}},
      {"abc", "", {}},  // no delimiter can end a token
      {"   ", " ", {}},
  };
  for (const auto& [text, delimiters, expected] : cases) {
    Tokens tokens{"stale"};
    EXPECT_TRUE(tokenize(tokens, text, delimiters));
    EXPECT_EQ(tokens, expected) << text;
    tokens = {"stale"};
    EXPECT_TRUE(tokenize(tokens, std::string(text), delimiters));
    EXPECT_EQ(tokens, expected) << text;
  }
  // Null text or delimiters, and an empty standard string, are refused with the list emptied.
  Tokens tokens{"stale"};
  EXPECT_FALSE(tokenize(tokens, std::string(), " "));
  EXPECT_TRUE(tokens.empty());
  EXPECT_TRUE(tokenize(tokens, "", " "));
  EXPECT_FALSE(tokenize(tokens, static_cast<const char*>(nullptr), " "));
  EXPECT_FALSE(tokenize(tokens, "a b", nullptr));
}

// Each routine edits a copy of the text and shows the result: the text, and for strhed and
// morphNumericString also the returned word or position and the cursor.
TEST(CStringEdits, KeepTheirOwnBlanksAndLimits) {
  const auto trim = [](char* s) { return c_trim(s), std::string(s); };
  const auto triml = [](char* s) { return c_triml(s), std::string(s); };
  const auto trimr = [](char* s) { return c_trimr(s), std::string(s); };
  const auto head = [](char* s) {
    const std::string word = strhed(&s);
    return word + "|" + s;
  };
  const auto morph = [](int digits) {
    return [digits](char* s) {
      const char* last = morphNumericString(s, digits);
      return s + (last == nullptr ? std::string(" null") : " @" + std::to_string(last - s));
    };
  };
  // clang-format off
  const std::tuple<std::function<std::string(char*)>, const char*, const char*> cases[] = {
      {trim, "  abc \t\r\n", "abc"},        {trim, "  ", ""},
      {trim, "\t\n", "\n"},                 {trim, "  \r\n", "\r"},
      {triml, "\t abc \n", "abc \n"},       {triml, "\nabc", "\nabc"},
      {trimr, "  ", " "},                   {trimr, " ab \t\r\n", " ab"},
      {trimr, "ab\v", "ab\v"},              {head, "  key   value  ", "key|value"},
      {head, "key", "key|"},                {head, " \t\n ", "|"},
      {head, "a\rb c", "a\rb|c"},           {head, "k \b\vrest\f", "k|rest"},
      {morph(2), "1.2345", "1.23 @3"},      {morph(2), "1.500", "1.5 @2"},
      {morph(2), "2.000", "2 @1"},          {morph(2), "3.", "3 @1"},
      {morph(0), "7.9", "7 @1"},            {morph(3), "10.00", "10 @2"},
      {morph(-1), "100.5", "1 @0"},         {morph(-1), "0.5", "0 @0"},
      {morph(-1), ".5", " @0"},             {morph(2), "120", "120 null"},
  };
  // clang-format on
  for (const auto& [routine, text, expected] : cases) {
    std::string buffer = text;
    EXPECT_EQ(routine(buffer.data()), expected) << '"' << text << '"';
  }
  c_trim(nullptr);
}

TEST(CountLines, CountsLineFeedsAndCarriageReturns) {
  const std::string path =
      testing::TempDir() + "mmutil_count_lines." + std::to_string(getpid()) + ".txt";
  for (const auto& [bytes, expected] : {std::pair{"a\r\nb\r\nc\r\n", 6}, {"a\nb", 1}, {"", 0}}) {
    std::ofstream(path, std::ios::binary) << bytes;
    EXPECT_EQ(count_lines(path.c_str()), expected) << bytes;
  }
  std::remove(path.c_str());
  EXPECT_EXIT(count_lines("no/such/file"), testing::ExitedWithCode(255), "");
}

TEST(MyStrcasestr, ComparesTheFirstNCharactersIgnoringCase) {
  EXPECT_EQ(my_strcasestr("ABC", "abd", 2), 1);
  EXPECT_EQ(my_strcasestr("ABC", "abd", 3), 0);
  EXPECT_EQ(my_strcasestr("x", "y", 0), 1);
  EXPECT_EQ(my_strcasestr("ab", "AB", 10), 1);  // both end together
  EXPECT_EQ(my_strcasestr("ab", "abc", 3), 0);
}

TEST(StringTrims, EachFamilyAndSideHasItsOwnBlanks) {
  using Trim = std::string& (*)(std::string&);
  // clang-format off
  const std::tuple<Trim, const char*, std::string, std::string> cases[] = {
      {trim, "trim", "\r\n x \r\n", "\r\n x"},  {trim, "trim", " \t ", ""},
      {trim, "trim", "", ""},                       {triml, "triml", "\"x", "\"x"},
      {triml, "triml", "\t x ", "x "},             {trimr, "trimr", "x\f", "x\f"},
      {trimr, "trimr", " x\t\r\n", " x"},         {trimr, "trimr", "\n\r", ""},
      {sg_triml, "sg_triml", "\"x", "x"},          {sg_triml, "sg_triml", "\n'x", "\n'x"},
      {sg_trimr, "sg_trimr", "x'\" \r\n", "x"},    {sg_trim, "sg_trim", " 'a b' ", "ab"},
      {sg_trim, "sg_trim", "a\tb", "a\tb"},        {sg_trim, "sg_trim", "\"'  '\"", ""},
  };
  // clang-format on
  for (auto [routine, name, text, expected] : cases) {
    EXPECT_EQ(&routine(text), &text);
    EXPECT_EQ(text, expected) << name;
  }
}

TEST(StringTests, CompareAndClassifyAsciiOnly) {
  EXPECT_TRUE(iequals("ABC", "abc"));
  EXPECT_FALSE(iequals("abc", "abcd"));
  EXPECT_TRUE(iequals("", ""));
  EXPECT_FALSE(iequals("\xc3\xa9", "\xc3\x89"));  // no case outside ASCII
  EXPECT_FALSE(iequals("[", "{"));                // '{' is not an upper-cased '['
  const std::pair<std::string, bool> words[] = {
      {"", false},  {"AZaz", true}, {"@", false},   {"[", false},          {"`", false},
      {"{", false}, {"ab1", false}, {"a b", false}, {"caf\xc3\xa9", false}};
  for (const auto& [word, expected] : words) EXPECT_EQ(isAlphabetical(word), expected) << word;
  EXPECT_EQ(RemoveWhiteSpaceUnderscore("a_b c\td _"), "abc\td");
}

TEST(Splitters, DropEmptyWordsBetweenTheirOwnSeparators) {
  EXPECT_EQ(split_string("  a\tb\n c \v\f\r"), (Tokens{"a", "b", "c"}));
  EXPECT_EQ(split_string(" \t\n"), Tokens{});
  EXPECT_EQ(split_string_dl(",a,,b ,", ','), (Tokens{"a", "b "}));
  EXPECT_EQ(split_string_dl("a b", ','), Tokens{"a b"});
  EXPECT_EQ(split_string_dl("", ','), Tokens{});
  Tokens words{"old"};
  split_to_words("a, b;;c", ", ;", &words);
  EXPECT_EQ(words, (Tokens{"a", "b", "c"}));
  split_to_words(";;", ";", &words);
  EXPECT_EQ(words, Tokens{});
  split_to_words("a b", "", &words);  // no separator: the whole text
  EXPECT_EQ(words, Tokens{"a b"});
}

}  // namespace
}  // namespace mmutil
