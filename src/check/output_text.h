// Small routines over the text of an engine output, shared by the readers of every engine:
// lines, words, numbers and labels, all on string views into the text that was read.
#ifndef GET_INTER_ENER_OUTPUT_TEXT_H
#define GET_INTER_ENER_OUTPUT_TEXT_H

#include <string>
#include <string_view>
#include <vector>

constexpr std::size_t npos = std::string_view::npos;

// `text` in upper case (ASCII letters only).
//
//   "rb3lyp" -> "RB3LYP"
std::string upper(std::string_view text);

bool starts_with(std::string_view text, std::string_view prefix);
bool contains(std::string_view text, std::string_view what);

// Where the last `what` in `text` begins, at `before` or earlier; npos when there is none.
// As text.rfind(what, before), though at memrchr's speed: outputs are searched from their end
// for texts that most of them do not hold, through hundreds of kilobytes.
//
//   find_last("E= 1 E= 2", "E=") -> 5;  find_last("E= 1 E= 2", "E=", 4) -> 0
std::size_t find_last(std::string_view text, std::string_view what, std::size_t before = npos);

// `text` without leading and trailing blanks, tabs and line ends.
//
//   "  -76.2 \r" -> "-76.2"
std::string_view trim(std::string_view text);

// The parts of `text` between the separators `separator`, empty parts included.
//
//   "a\\\\b\\" split at "\\" -> {"a", "", "b", ""}
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

// The lines of `text` without their line ends ("\n" or "\r\n"); a text ending in a line feed
// gives a last empty line.
//
//   "a\r\nb" -> {"a", "b"}
std::vector<std::string_view> lines_of(std::string_view text);

// The line of `text` that begins at `pos`, without its line end, and `pos` moved to the next
// line's start (text.size() after the last line). False when `pos` is at the end already. Walks
// a text line by line without splitting the rest of it.
//
//   "a\r\nb", 0 -> true, "a", pos 3
bool next_line(std::string_view text, std::size_t& pos, std::string_view& line);

// The whole line of `text` that holds position `at`, without its line feed.
std::string_view line_at(std::string_view text, std::size_t at);

// The line of `text` that holds the last occurrence of `marker`, or "" when there is none.
//
//   "E = 1\nE = 2\n", "E =" -> "E = 2"
std::string_view last_line_with(std::string_view text, std::string_view marker);

// The blank-separated words of a line (blanks, tabs and carriage returns separate).
//
//   "  Total  MP2 energy\t-76.2" -> {"Total", "MP2", "energy", "-76.2"}
std::vector<std::string_view> words_of(std::string_view line);

// A number that fills all of `text` (blanks around it aside), into `value`; Fortran's D exponent
// is read as E.
//
//   " -76.25 " -> true, -76.25;   "-0.76D+02" -> true, -76.0;   "12a" -> false
bool read_number(std::string_view text, double& value);

// The first number among the words of `text` after position `from`, into `value`.
//
//   "Total DFT energy =   -76.4", 16 -> true, -76.4
bool number_after(std::string_view text, std::size_t from, double& value);

// Whether `word` is `name` in any letter case, followed by a colon or not ("ENERGY:").
bool is_word(std::string_view word, std::string_view name);

// The text of `text` cut at its last line feed: a head taken from a longer text may end inside
// a line, which is not read as a whole one. A text without a line feed gives "".
//
//   "a\nb\nc" -> "a\nb\n"
std::string_view whole_lines(std::string_view text);

#endif  // GET_INTER_ENER_OUTPUT_TEXT_H
