// Formatting into a string, for messages that are built before they are printed.
#ifndef GET_INTER_ENER_TEXT_FORMAT_H
#define GET_INTER_ENER_TEXT_FORMAT_H

#include <string>

// The text printf() would write for `format` and its arguments, of any length.
//
//   format_text("site %d of %s", 2, "x")  ->  "site 2 of x"
std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));

#endif  // GET_INTER_ENER_TEXT_FORMAT_H
