// Text and file routines of the mmutil utility library.
//
// The C-string routines below edit their argument in place and never grow it. Each has its
// own set of blank characters; the sets differ on purpose and are listed with each routine.
#ifndef MMUTIL_TEXT_H
#define MMUTIL_TEXT_H

#include <string>
#include <vector>

namespace mmutil {

// tokenize()
//
// Clears `tokens`, then appends every maximal run of characters of `text` that are not in
// `delimiters`, in order. Runs of delimiters count as one; leading and trailing delimiters
// give nothing; no token is ever empty. An empty delimiter set gives no token at all.
// Returns false (with `tokens` emptied) if `text` or `delimiters` is null, else true; an
// empty `text` is accepted.
//
//   tokenize(t, "  a  b ", " ")  ->  true, t = {"a", "b"}
bool tokenize(std::vector<std::string>& tokens, const char* text, const char* delimiters);

// tokenize()
//
// As above for a standard string, except that an empty `text` is rejected: it returns false
// (with `tokens` emptied) if `text` is empty or `delimiters` is null.
//
//   tokenize(t, std::string(""), " ")  ->  false, t = {}
bool tokenize(std::vector<std::string>& tokens, const std::string& text, const char* delimiters);

// c_triml()
//
// Removes leading tabs and spaces. A null string is ignored.
//
//   "\t  abc "  ->  "abc "
void c_triml(char* s);

// c_trimr()
//
// Removes trailing tabs, line feeds, carriage returns and spaces, but never the first
// character: a string of blanks keeps its first one. A null string is ignored.
//
//   "abc \r\n"  ->  "abc";   "  "  ->  " "
void c_trimr(char* s);

// c_trim()
//
// c_triml() followed by c_trimr(). A leading line feed or carriage return is kept, since the
// left side removes only tabs and spaces.
//
//   "  abc \t\r\n"  ->  "abc";   "\t\n"  ->  "\n"
void c_trim(char* s);

// strhed()
//
// Splits off the first word of the text at `*cursor`: skips tabs, line feeds and spaces, ends
// the word at the next space, tab, line feed or end of text (writing a NUL over the
// separator), strips spaces and control codes 8 to 13 from both ends of the remainder, moves
// `*cursor` to the remainder and returns the word. A carriage return is part of a word.
//
//   cursor = "  key   value  "  ->  returns "key", cursor = "value"
char* strhed(char** cursor);

// count_lines()
//
// Counts the line feeds and carriage returns of a file, so a CRLF file counts each line
// twice and a last line without an end is not counted. If the file cannot be opened, prints
// "ERROR: Failed to open input file NAME" and ends the process with status 255.
//
//   "a\r\nb\r\nc\r\n"  ->  6
int count_lines(const char* file_name);

// my_strcasestr()
//
// Despite its name, a comparison: returns 1 if the first `n` characters of `a` and `b` agree
// regardless of case, else 0. Returns 1 for n < 1, and 1 if both strings end together before
// `n` characters.
//
//   my_strcasestr("ABC", "abd", 2)  ->  1
int my_strcasestr(const char* a, const char* b, int n);

// morphNumericString()
//
// Shortens a decimal number in place to at most `digits` decimals, without rounding, then
// strips trailing zeros and a bare trailing point. A negative `digits` cuts at the point and
// then also strips the integer part's trailing zeros (100.5 -> "1"), but always keeps the
// first character. Returns a pointer to the last character considered (the NUL where a point
// was removed), or null, with the text unchanged, if the text holds no point.
//
//   "1.500" with 2  ->  "1.5";   "7.9" with 0  ->  "7"
char* morphNumericString(char* number, int digits);

}  // namespace mmutil

#endif  // MMUTIL_TEXT_H
