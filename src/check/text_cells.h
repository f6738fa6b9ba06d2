// Text from the inputs as the check's report shows it. File names and the lines quoted from
// outputs may hold any bytes: control characters, bytes that are not UTF-8, wide and combining
// characters. The table shows them so that its columns stay aligned, and the JSON document so
// that it stays valid JSON in valid UTF-8.
#ifndef GET_INTER_ENER_TEXT_CELLS_H
#define GET_INTER_ENER_TEXT_CELLS_H

#include <cstddef>
#include <string>
#include <string_view>

// The length of the well-formed UTF-8 sequence that begins at `text[at]` (1 to 4), its code
// point in `code_point`; 0 when the bytes there are not one (a stray continuation byte, an
// overlong form, a surrogate, a value above U+10FFFF, a sequence cut off by the end).
//
//   "\xc3\xa9", 0  ->  2, U+00E9;   "\xc3", 0  ->  0;   "\xed\xa0\x80", 0  ->  0
std::size_t utf8_sequence(std::string_view text, std::size_t at, char32_t& code_point);

// `text` for a table cell or a report line: a tab, carriage return and line feed become "\t",
// "\r", "\n", other control characters, DEL and bytes that are not UTF-8 become "\xNN"; every
// other character is kept.
//
//   "a\tb\x01\xff"  ->  "a\\tb\\x01\\xff";   "caf\xc3\xa9"  ->  unchanged
std::string printable_text(std::string_view text);

// The columns that the UTF-8 text `text` takes on a terminal: combining marks and zero-width
// characters none, wide (East Asian) characters two, every other character one. Bytes that are
// not UTF-8 count one each (printable_text() has replaced them before).
//
//   "abc" -> 3;   "e\xcc\x81" (e and a combining acute) -> 1;   "\xe6\xb0\xb4" (CJK) -> 2
std::size_t display_width(std::string_view text);

#endif  // GET_INTER_ENER_TEXT_CELLS_H
