#include "text_cells.h"

#include <algorithm>
#include <iterator>

#include "text_format.h"

namespace {

// A range of code points, both ends included.
struct Range {
  char32_t first, last;
};

// Characters that take no column: the combining marks of the general blocks and of the
// Cyrillic, Hebrew and Arabic scripts, zero-width spaces and joiners, directional marks,
// variation selectors.
constexpr Range kZeroWidth[] = {
    {0x0300, 0x036f}, {0x0483, 0x0489}, {0x0591, 0x05bd}, {0x0610, 0x061a}, {0x064b, 0x065f},
    {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff}, {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2064},
    {0x20d0, 0x20ff}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}, {0xfeff, 0xfeff}, {0xe0100, 0xe01ef},
};

// Characters that take two columns: the East Asian wide and fullwidth blocks, and emoji.
constexpr Range kWide[] = {
    {0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xac00, 0xd7a3},   {0xf900, 0xfaff},
    {0xfe30, 0xfe4f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},   {0x1f300, 0x1f64f},
    {0x1f900, 0x1f9ff}, {0x20000, 0x2fffd}, {0x30000, 0x3fffd},
};

template <std::size_t N>
bool in_ranges(const Range (&ranges)[N], char32_t c) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [c](const Range& r) { return c >= r.first && c <= r.last; });
}

bool is_continuation(unsigned char byte) { return (byte & 0xc0) == 0x80; }

}  // namespace

std::size_t utf8_sequence(std::string_view text, std::size_t at, char32_t& code_point) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    code_point = lead;
    return 1;
  }
  // The sequence's length, the bits of the lead byte, and the range the second byte must be
  // in, which rules out overlong forms, surrogates and values above U+10FFFF.
  std::size_t length = 0;
  unsigned char low = 0x80, high = 0xbf;
  if (lead >= 0xc2 && lead <= 0xdf) {
    length = 2;
  } else if (lead >= 0xe0 && lead <= 0xef) {
    length = 3;
    if (lead == 0xe0) low = 0xa0;
    if (lead == 0xed) high = 0x9f;
  } else if (lead >= 0xf0 && lead <= 0xf4) {
    length = 4;
    if (lead == 0xf0) low = 0x90;
    if (lead == 0xf4) high = 0x8f;
  } else {
    return 0;
  }
  if (text.size() - at < length || byte(1) < low || byte(1) > high) return 0;
  char32_t value = lead & (0x7f >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!is_continuation(byte(i))) return 0;
    value = (value << 6) | (byte(i) & 0x3f);
  }
  code_point = value;
  return length;
}

std::string printable_text(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    char32_t c = 0;
    const std::size_t length = utf8_sequence(text, at, c);
    if (length == 0 || c < 0x20 || c == 0x7f) {
      const auto byte = static_cast<unsigned char>(text[at]);
      shown += byte == '\t'   ? std::string("\\t")
               : byte == '\r' ? std::string("\\r")
               : byte == '\n' ? std::string("\\n")
                              : format_text("\\x%02x", byte);
      ++at;
    } else {
      shown.append(text, at, length);
      at += length;
    }
  }
  return shown;
}

std::size_t display_width(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    char32_t c = 0;
    const std::size_t length = utf8_sequence(text, at, c);
    if (length == 0) {
      ++width;
      ++at;
      continue;
    }
    width += in_ranges(kZeroWidth, c) ? 0 : in_ranges(kWide, c) ? 2 : 1;
    at += length;
  }
  return width;
}
