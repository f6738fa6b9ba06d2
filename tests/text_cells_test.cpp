// Text as the check's report shows it: well-formed UTF-8 told from every kind of malformed
// sequence, control bytes made visible, and the columns a text takes.
#include "text_cells.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TextCells, Utf8SequencesAndTheirCodePoints) {
  const struct {
    std::string text;
    std::size_t length;
    char32_t code_point;
  } cases[] = {
      {"a", 1, U'a'},
      {"\xc2\x80", 2, 0x80},              // the lowest two-byte character
      {"\xdf\xbf", 2, 0x7ff},             // the highest
      {"\xe0\xa0\x80", 3, 0x800},         // the lowest three-byte character
      {"\xed\x9f\xbf", 3, 0xd7ff},        // just below the surrogates
      {"\xee\x80\x80", 3, 0xe000},        // just above them
      {"\xf0\x90\x80\x80", 4, 0x10000},   // the lowest four-byte character
      {"\xf4\x8f\xbf\xbf", 4, 0x10ffff},  // the highest code point
      {"\xc0\xaf", 0, 0},                 // overlong two bytes
      {"\xc1\xbf", 0, 0},
      {"\xe0\x9f\xbf", 0, 0},      // overlong three bytes
      {"\xf0\x8f\xbf\xbf", 0, 0},  // overlong four bytes
      {"\xed\xa0\x80", 0, 0},      // a surrogate
      {"\xf4\x90\x80\x80", 0, 0},  // above U+10FFFF
      {"\xf5\x80\x80\x80", 0, 0},  // no lead byte
      {"\x80", 0, 0},              // a continuation byte alone
      {"\xc3", 0, 0},              // cut off by the end
      {"\xe6\xb0", 0, 0},
      {"\xc3(", 0, 0},      // a second byte that is no continuation
      {"\xe6\xb0(", 0, 0},  // a third
  };
  for (const auto& c : cases) {
    char32_t code_point = 0;  // what a malformed sequence leaves untouched
    EXPECT_EQ(utf8_sequence(c.text, 0, code_point), c.length) << c.text;
    EXPECT_EQ(code_point, c.code_point) << c.text;
  }
}

TEST(TextCells, PrintableTextAndDisplayWidth) {
  const struct {
    std::string text, shown;
    std::size_t width;
  } cases[] = {
      {"plain.log", "plain.log", 9},
      {"a\tb\rc\nd", "a\\tb\\rc\\nd", 10},
      {std::string("\0\x1f\x7f", 3), "\\x00\\x1f\\x7f", 12},
      {"caf\xc3\xa9", "caf\xc3\xa9", 4},            // precomposed accent
      {"cafe\xcc\x81", "cafe\xcc\x81", 4},          // combining accent: no column
      {"\xe6\xb0\xb4.log", "\xe6\xb0\xb4.log", 6},  // CJK: two columns
      {"\xef\xbc\xa1", "\xef\xbc\xa1", 2},          // fullwidth A
      {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80", 2},  // emoji
      {"a\xe2\x80\x8b"
       "b",
       "a\xe2\x80\x8b"
       "b",
       2},                              // zero-width space
      {"x\xff\xc3", "x\\xff\\xc3", 9},  // bytes that are not UTF-8
  };
  for (const auto& c : cases) {
    EXPECT_EQ(printable_text(c.text), c.shown) << c.text;
    EXPECT_EQ(display_width(c.shown), c.width) << c.shown;
  }
}

}  // namespace
