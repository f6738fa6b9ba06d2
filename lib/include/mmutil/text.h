// Text and file routines of the mmutil utility library.
//
// The C-string routines below edit their argument in place and never grow it. Each has its
// own set of blank characters; the sets differ on purpose and are listed with each routine.
#ifndef MMUTIL_TEXT_H
#define MMUTIL_TEXT_H

#include <ctime>
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

// ---------------------------------------------------------------------------------------------
// Standard-string trims, comparison and classification. All work on bytes and ASCII letters
// only. The left trims never remove a carriage return or line feed; the right trims do.
// Vertical tab and form feed are never blank.

// triml(), trimr(), trim()
//
// Remove leading tabs and spaces (triml), trailing tabs, line feeds, carriage returns and
// spaces (trimr), or both in that order (trim), in place; return the same string.
//
//   trim("\r\n x \r\n")  ->  "\r\n x": the front starts with a carriage return
std::string& triml(std::string& s);
std::string& trimr(std::string& s);
std::string& trim(std::string& s);

// sg_triml(), sg_trimr(), sg_trim()
//
// As triml(), trimr() and trim(), with the double quote and the apostrophe blank on both
// sides; sg_trim() then also removes every space left inside (tabs inside stay).
//
//   sg_trim(" 'a b' ")  ->  "ab"
std::string& sg_triml(std::string& s);
std::string& sg_trimr(std::string& s);
std::string& sg_trim(std::string& s);

// iequals()
//
// True when `a` and `b` have the same length and agree ignoring the case of ASCII letters.
//
//   iequals("ABC", "abc")  ->  true
bool iequals(const std::string& a, const std::string& b);

// isalpha()
//
// Non-zero when the byte value `c` is an ASCII letter, whatever the process locale; 0 for
// every other value, negative ones included. A function of the library's own, so that its
// address can be handed to the standard algorithms.
//
//   isalpha('q')  ->  non-zero;   isalpha(-61)  ->  0
int isalpha(int c);

// isAlphabetical()
//
// True when `s` is not empty and made of ASCII letters only.
//
//   isAlphabetical("ab1")  ->  false
bool isAlphabetical(const std::string& s);

// RemoveWhiteSpaceUnderscore()
//
// A copy of `s` without its spaces and underscores; tabs and other bytes stay.
//
//   "a_b c\td"  ->  "abc\td"
std::string RemoveWhiteSpaceUnderscore(const std::string& s);

// ---------------------------------------------------------------------------------------------
// Splitting. Words are copies, in order; runs of separators count as one and no word is empty.

// split_string()
//
// The words of `text` between runs of white space (space, tab, line feed, vertical tab, form
// feed, carriage return).
//
//   "  a\tb\n c "  ->  {"a", "b", "c"}
std::vector<std::string> split_string(const std::string& text);

// split_string_dl()
//
// The words of `text` between runs of the byte `dl`; every other byte, blanks included, stays.
//
//   (",a,,b ,", ',')  ->  {"a", "b "}
std::vector<std::string> split_string_dl(const std::string& text, char dl);

// split_to_words()
//
// Replaces the contents of `*out` (which must exist) with the words of `text` between runs of
// bytes of the set `delims`. An empty set gives a non-empty text whole, as one word.
//
//   ("a, b;;c", ", ;", &words)  ->  words = {"a", "b", "c"}
void split_to_words(const std::string& text, const std::string& delims,
                    std::vector<std::string>* out);

// ---------------------------------------------------------------------------------------------
// Paths and the file system. Paths are byte strings.

// base_filename()
//
// What follows the last slash or backslash of `path`; the whole path when it has neither.
//
//   "dir/sub/file.txt"  ->  "file.txt";   "dir/"  ->  ""
std::string base_filename(const std::string& path);

// remove_filename_extension()
//
// `name` without its last dot and what follows, wherever that dot stands: a dotted directory
// with an undotted file name loses the file name.
//
//   "a.b.c"  ->  "a.b";   "run.d/input"  ->  "run"
std::string remove_filename_extension(const std::string& name);

// ReplaceSlashWithUnderscore()
//
// Replaces every slash and every backslash of `s` with an underscore, in place.
//
//   "a/b\\c"  ->  "a_b_c"
void ReplaceSlashWithUnderscore(char* s);

// ReplaceBackSlashWithSlash()
//
// Replaces every backslash of `s` with a slash, in place.
//
//   "a\\b/c"  ->  "a/b/c"
void ReplaceBackSlashWithSlash(char* s);

// create_directory()
//
// Makes the directory `path` with mode 0750 (less the process's creation mask) unless
// something of any kind already exists there. Parents are not made. Returns 0 when made or
// already there, -1 (with errno set) when it cannot be made.
//
//   create_directory("out/run1")  ->  -1 when "out" does not exist
int create_directory(const char* path);

// dir_exists()
//
// 1 when `path` exists and its mode has the directory bit (octal 040000) set, so block devices
// and sockets count too; 0 when it is something else or absent (ENOENT, ENOTDIR); -1 when it
// cannot be examined for another reason, such as a parent without search permission.
//
//   dir_exists("file.txt/x")  ->  0
int dir_exists(const char* path);

// fileExist()
//
// True when anything exists at `path`: files, directories, devices, unreadable files.
//
//   fileExist("/tmp")  ->  true
bool fileExist(const char* path);

// file_exists()
//
// 1 when `path` can be opened for reading, else 0; 0 for a null pointer.
//
//   file_exists(nullptr)  ->  0
int file_exists(const char* path);

// backup_file()
//
// Moves a readable file to its own name with "#" appended, replacing an older backup, by
// running "mv %s %s#" through the shell with the path quoted for it (so blanks and shell
// characters in the name are safe; a name beginning with "-" is given as "./-..."). Returns the
// shell's status, or 0 without running anything when the file cannot be opened for reading.
//
//   backup_file("data.txt")  ->  0, and "data.txt#" holds what "data.txt" held
int backup_file(const char* path);

// get_workdir()
//
// Assigns the working directory to `out`, backslashes turned into slashes, without a trailing
// slash. When it cannot be read, prints "WARNING: getcwd failed!" and assigns "".
//
//   get_workdir(dir)  ->  dir = "/home/user/run"
void get_workdir(std::string& out);

// globFileVector()
//
// The paths matching the shell pattern `pattern`, sorted, with a leading "~" or "~user"
// expanded; empty when nothing matches or the expansion fails. Braces are not expanded and
// directories get no trailing slash.
//
//   globFileVector("*.log")  ->  {"a.log", "b.log"}
std::vector<std::string> globFileVector(const std::string& pattern);

// ---------------------------------------------------------------------------------------------
// Dates and tabular numeric output.

// get_date()
//
// Stores the current local month (1 to 12), day of the month and four-digit year.
//
//   get_date(&month, &day, &year)  ->  3, 5, 2026
void get_date(int* month, int* day, int* year);

// format_date_time()
//
// Writes the date-time text of `t` into `buffer`, which must hold at least 32 bytes: the
// weekday and month as three English letters, the day unpadded, the time in two-digit fields
// and the four-digit year, with no newline; a weekday or month out of range gives "???" for
// both names. Returns the number of characters written.
//
//   Thursday 5 March 2026, 09:07:03  ->  "Thu Mar 5 09:07:03 2026"
int format_date_time(const std::tm& t, char* buffer);

// get_now_date_time()
//
// format_date_time() of the current local time, into `buffer` (at least 32 bytes).
int get_now_date_time(char* buffer);

// get_now_date_time()
//
// The same text in a static buffer of the routine's own, which the next call overwrites; not
// for use from two threads at once.
char* get_now_date_time();

// output_matrix()
//
// Writes the `n` by `n` matrix with rows `m[0]` to `m[n-1]` to the file `path` (replaced if
// it exists) in blocks of `w` columns, then a block of the remaining columns: each block is a
// heading line (8 blanks, then the 0-based column numbers as "%13d") and one line per row
// ("%7d    " with the 0-based row number, then the values as "%13.8f"). n = 0 gives an empty
// file. Returns the result of closing the file.
//
// If the file cannot be created, or `w` is below 1, prints the error header (unit "mmutil")
// and a message, and ends the process with status 1; no file is made for a bad `w`.
int output_matrix(const double* const* m, int n, int w, const char* path);

// output_vector()
//
// Writes the `n` values of `v` to the file `path`, `w` per line as "%14.7f", then a newline;
// so when `n` is a multiple of `w` the file ends with an empty line. n < 1 gives a file of one
// newline. Fails as output_matrix() does. Returns the result of closing the file.
//
//   {1, 2, 3}, w = 2  ->  "     1.0000000     2.0000000\n     3.0000000\n"
int output_vector(const double* v, int n, int w, const char* path);

// output_vvector()
//
// Writes each inner vector of `columns` as one column of the file `path`: per row, every
// column's value as " %14.7f", then a newline. Columns of unequal length give only the rows
// that all of them have. Prints "ncols = " and "nrows = " with the number of columns and of
// rows written on standard output. No column gives an empty file. Fails as output_matrix()
// does if the file cannot be created. Returns the result of closing the file.
int output_vvector(const std::vector<std::vector<double>>& columns, const char* path);

// print_error_header()
//
// Prints the transport suite's fatal error header on standard output:
// "\nERROR  transport : UNIT : line LINE : \n", where UNIT names the reporting source unit
// and LINE the line of the report.
void print_error_header(const char* unit, int line);

// fail_with_status()
//
// The error header, then the printf-style message on standard output, then the end of the
// process with `status`.
//
//   fail_with_status(1, "mmutil", __LINE__, "Failed to create file %s\n", path);
[[noreturn]] void fail_with_status(int status, const char* unit, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

}  // namespace mmutil

#endif  // MMUTIL_TEXT_H
